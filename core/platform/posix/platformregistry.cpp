#include "platform/platformregistry.h"

#include "platform/platformfolders.h"
#include "platform/platformtext.h"
#include "platform/posix/registrystore.h"
#include "platform/registrypath.h"

#include <pthread.h>

#include <cstdlib>

namespace platform {
namespace {

    /// The folder of both files that the environment names, else "". Not absolute, it is none: it
    /// would be another one after each change of the working directory.
    std::string namedFolder()
    {
        const char* folder = std::getenv("TABASE_REGISTRY_FOLDER");
        return folder != nullptr ? folder : "";
    }

    std::string userFolder()
    {
        const std::string named = namedFolder();
        return !named.empty() ? named : ToUtf8(GetUserConfigFolder()) + "/tabase";
    }

    std::string machineFolder()
    {
        const std::string named = namedFolder();
        return !named.empty() ? named : "/etc/tabase";
    }

    struct SStores
    {
        RegistryStore user{ { userFolder, "user.registry", 0700 } };
        RegistryStore machine{ { machineFolder, "machine.registry", 0755 } };
    };

    SStores& getStores();

    // The analysis of locks does not follow one from function to function.
    void beforeFork() TU_NO_THREAD_SAFETY_ANALYSIS
    {
        getStores().user.BeforeFork();
        getStores().machine.BeforeFork();
    }

    void afterFork() TU_NO_THREAD_SAFETY_ANALYSIS
    {
        getStores().machine.AfterFork();
        getStores().user.AfterFork();
    }

    void closeAll()
    {
        getStores().user.Close();
        getStores().machine.Close();
    }

    SStores& getStores()
    {
        // Never destroyed: what runs at the exit of the process may still ask for values.
        static SStores& s_stores = *new SStores;
        // A fork meanwhile finds nothing open yet.
        static const int s_isWatched = pthread_atfork(beforeFork, afterFork, afterFork);
        // Otherwise every process would leave its values in the journal, as if it had crashed.
        static const int s_isClosedAtExit = std::atexit(closeAll);
        (void)s_isWatched;
        (void)s_isClosedAtExit;
        return s_stores;
    }

    RegistryStore* findStore(ERegistryRoot root)
    {
        switch (root) {
        case eRo_CurrentUser:
        case eRo_Users:
            return &getStores().user;
        case eRo_ClassesRoot:
        case eRo_LocalMachine:
        case eRo_CurrentConfig:
            return &getStores().machine;
        }
        return nullptr;
    }

    /// Which file a key is in, and the key in one spelling; null where there is none.
    RegistryStore* find(ERegistryRoot root, std::u16string_view key, std::u16string& normal)
    {
        return NormaliseRegistryKey(key, normal) ? findStore(root) : nullptr;
    }

} // namespace

bool ReadRegistry(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    std::size_t maxBytes, std::vector<unsigned char>& data, ERegistryType* type)
{
    std::u16string normal;
    RegistryStore* const store = find(root, key, normal);
    return store != nullptr && IsRegistryName(name)
        && store->Read(root, normal, UntilZero(name), maxBytes, data, type);
}

bool WriteRegistry(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    ERegistryType type, const void* data, std::size_t size)
{
    std::u16string normal;
    RegistryStore* const store = find(root, key, normal);
    return store != nullptr && IsRegistryName(name)
        && store->Write(root, normal, UntilZero(name), type, data, size);
}

bool ListRegistryKeys(
    ERegistryRoot root, std::u16string_view key, std::vector<std::u16string>& names)
{
    names.clear();
    std::u16string normal;
    RegistryStore* const store = find(root, key, normal);
    return store != nullptr && store->ListKeys(root, normal, names);
}

bool ListRegistryValues(
    ERegistryRoot root, std::u16string_view key, std::vector<SRegistryValue>& values)
{
    values.clear();
    std::u16string normal;
    RegistryStore* const store = find(root, key, normal);
    return store != nullptr && store->ListValues(root, normal, values);
}

bool RemoveRegistryKey(ERegistryRoot root, std::u16string_view key)
{
    std::u16string normal;
    RegistryStore* const store = find(root, key, normal);
    return store != nullptr && !normal.empty() && store->RemoveKey(root, normal);
}

} // namespace platform
