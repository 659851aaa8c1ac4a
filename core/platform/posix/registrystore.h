#pragma once

#include "platform/platformlock.h"
#include "platform/posix/registrydatabase.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Which file a path means: it changes when another file takes the place.
struct SFileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t number = 0; // 0 where there is no file

    bool operator==(const SFileIdentity&) const = default;
};

/// The file of the registry at one place, which is looked up for each operation: whether the one
/// held open is still there, and whether there is one at all.
///
/// A file that cannot be read is set aside: renamed, with those beside it, and told of by
/// ReportOnRegistry. Opening, making and setting aside happen under a lock of the folder, so that
/// of several processes one does it and the others find it done.
///
/// Threads: any; a thread is not stopped in an operation. Forking waits for an operation to end.
/// Failure: false.
class RegistryStore
{
public:
    struct SPlace
    {
        std::string (*findFolder)(); // not absolute where there is none
        const char* fileName;
        unsigned int rights; // of a folder that has to be made; the file gets those that fit it
    };

    explicit RegistryStore(const SPlace& place)
        : m_place(place)
    {
    }

    bool Read(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
        std::size_t maxBytes, std::vector<unsigned char>& data, ERegistryType* type);
    bool Write(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
        ERegistryType type, const void* data, std::size_t size);
    bool ListKeys(ERegistryRoot root, std::u16string_view key, std::vector<std::u16string>& names);
    bool ListValues(
        ERegistryRoot root, std::u16string_view key, std::vector<SRegistryValue>& values);
    bool RemoveKey(ERegistryRoot root, std::u16string_view key);

    /// The next operation opens the file again. Where nobody else has it open, its journal is empty
    /// afterwards.
    void Close();
    /// A connection must not be carried into a child: both processes open it anew behind the fork.
    void BeforeFork() TU_ACQUIRE(m_lock);
    void AfterFork() TU_RELEASE(m_lock);

private:
    enum EAccess
    {
        eA_Read,
        eA_Write,
        eA_Create, // writes, and makes the file where there is none
    };

    template <class Operation> ERegistryStatus run(EAccess access, Operation operation);
    template <class Operation>
    ERegistryStatus attempt(EAccess access, Operation operation) TU_REQUIRES(m_lock);
    ERegistryStatus makeReady(EAccess access) TU_REQUIRES(m_lock);
    ERegistryStatus open(const std::string& path, EAccess access) TU_REQUIRES(m_lock);
    void letGo(const std::string& path, EAccess access) TU_REQUIRES(m_lock);
    bool isCurrent() const TU_REQUIRES(m_lock);
    bool setAside(const std::string& path) TU_REQUIRES(m_lock);
    void report(const std::string& path, const std::string& consequence) TU_REQUIRES(m_lock);

    const SPlace m_place;
    CriticalSection m_lock;
    RegistryDatabase m_database TU_GUARDED_BY(m_lock);
    std::string m_path TU_GUARDED_BY(m_lock); // of what is open
    SFileIdentity m_identity TU_GUARDED_BY(m_lock);
    SFileIdentity m_journal TU_GUARDED_BY(m_lock); // the one beside it
    SFileIdentity m_reported TU_GUARDED_BY(m_lock); // the file that stays, and was told of
    std::u16string m_report TU_GUARDED_BY(m_lock); // to be told when the lock is left
};

} // namespace platform
