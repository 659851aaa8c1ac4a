#include "platform/posix/registrystore.h"

#include "platform/platformtext.h"
#include "platform/registryreport.h"
#include "platform/stopguard.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace platform {
namespace {

    // What SQLite puts beside a file.
    constexpr const char* kJournal = "-wal";
    constexpr std::array kCompanions{ kJournal, "-shm", "-journal" };

    SFileIdentity identify(const std::string& path)
    {
        struct stat status;
        if (stat(path.c_str(), &status) != 0) {
            return {};
        }
        return { status.st_dev, status.st_ino };
    }

    bool isThere(const std::string& path)
    {
        struct stat status;
        return lstat(path.c_str(), &status) == 0; // a link that leads nowhere, too
    }

    bool hasContent(const std::string& path)
    {
        struct stat status;
        return stat(path.c_str(), &status) == 0 && status.st_size != 0;
    }

    /// A root is there before its file is; one whose file cannot be used is not empty for that.
    bool isListed(ERegistryStatus status, std::u16string_view key)
    {
        return status == eRS_Done || (status == eRS_Missing && key.empty());
    }

    std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

    int openFolder(const std::string& path)
    {
        return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }

    /// Makes the folder and those above it with these rights, whatever the process's usual ones
    /// are, and durably: a value in it is to survive a crash.
    bool makeFolder(const std::string& path, mode_t rights)
    {
        if (path.empty() || access(path.c_str(), F_OK) == 0) {
            return !path.empty();
        }
        const std::string above = folderOf(path.substr(0, path.find_last_not_of('/') + 1));
        if (!makeFolder(above, rights)) {
            return false;
        }
        if (mkdir(path.c_str(), rights) == 0) {
            (void)chmod(path.c_str(), rights);
        } else if (errno != EEXIST) {
            return false;
        }
        const int folder = openFolder(above);
        if (folder >= 0) {
            (void)fsync(folder); // not every file system can, nor knows a later moment
            close(folder);
        }
        return true;
    }

    /// Makes the file, unless it is there, with these rights, whatever the process's usual ones
    /// are; SQLite gives those beside it the same. Where it cannot be made, opening fails, too.
    void makeFile(const std::string& path, mode_t rights)
    {
        const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights);
        if (file >= 0) {
            (void)fchmod(file, rights);
            close(file);
        }
    }

    /// Keeps other processes from opening files in a folder. It goes when its process ends, however
    /// that ends, and leaves nothing behind.
    class FolderLock
    {
    public:
        explicit FolderLock(const std::string& folder)
            : m_folder(openFolder(folder))
        {
        }
        ~FolderLock()
        {
            if (m_folder >= 0) {
                close(m_folder);
            }
        }
        FolderLock(const FolderLock&) = delete;
        FolderLock& operator=(const FolderLock&) = delete;

        bool Take()
        {
            constexpr timespec kPause{ 0, 2'000'000 };
            constexpr int kPauses = kRegistryPatienceMs / 2;
            for (int i = 0; m_folder >= 0 && i < kPauses; ++i) {
                if (flock(m_folder, LOCK_EX | LOCK_NB) == 0) {
                    return true;
                }
                if (errno != EWOULDBLOCK && errno != EINTR) {
                    return false;
                }
                nanosleep(&kPause, nullptr);
            }
            return false;
        }

    private:
        const int m_folder;
    };

} // namespace

bool RegistryStore::Read(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    std::size_t maxBytes, std::vector<unsigned char>& data, ERegistryType* type)
{
    const std::string foldedKey = FoldRegistryText(key);
    const std::string foldedName = FoldRegistryText(name);
    return run(eA_Read, [&](RegistryDatabase& database) {
        return database.Read(root, foldedKey, foldedName, maxBytes, data, type);
    }) == eRS_Done;
}

bool RegistryStore::Write(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    ERegistryType type, const void* data, std::size_t size)
{
    const SRegistryText keyText{ ToUtf8(key), FoldRegistryText(key) };
    const SRegistryText nameText{ ToUtf8(name), FoldRegistryText(name) };
    return run(eA_Create, [&](RegistryDatabase& database) {
        return database.Write(root, keyText, nameText, type, data, size);
    }) == eRS_Done;
}

bool RegistryStore::ListKeys(
    ERegistryRoot root, std::u16string_view key, std::vector<std::u16string>& names)
{
    const std::string folded = FoldRegistryText(key);
    const ERegistryStatus status = run(eA_Read,
        [&](RegistryDatabase& database) { return database.ListKeys(root, folded, names); });
    return isListed(status, key);
}

bool RegistryStore::ListValues(
    ERegistryRoot root, std::u16string_view key, std::vector<SRegistryValue>& values)
{
    const std::string folded = FoldRegistryText(key);
    const ERegistryStatus status = run(eA_Read,
        [&](RegistryDatabase& database) { return database.ListValues(root, folded, values); });
    return isListed(status, key);
}

bool RegistryStore::RemoveKey(ERegistryRoot root, std::u16string_view key)
{
    const std::string folded = FoldRegistryText(key);
    return run(eA_Write, [&](RegistryDatabase& database) {
        return database.RemoveKey(root, folded);
    }) == eRS_Done;
}

void RegistryStore::Close()
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    m_database.Close();
}

void RegistryStore::BeforeFork()
{
    m_lock.Enter();
    m_database.Close();
}

void RegistryStore::AfterFork() { m_lock.Leave(); }

template <class Operation> ERegistryStatus RegistryStore::run(EAccess access, Operation operation)
{
    std::u16string report;
    ERegistryStatus status = eRS_Failed;
    {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        status = attempt(access, operation);
        report.swap(m_report);
    }
    if (!report.empty()) {
        ReportOnRegistry(report);
    }
    return status;
}

template <class Operation>
ERegistryStatus RegistryStore::attempt(EAccess access, Operation operation)
{
    constexpr int kAttempts = 3;
    for (int i = 0; i < kAttempts; ++i) {
        ERegistryStatus status = makeReady(access);
        if (status == eRS_Done) {
            status = operation(m_database);
        }
        if (status == eRS_Missing || (status == eRS_Done && (access == eA_Read || isCurrent()))) {
            return status;
        }
        if (status != eRS_Done) {
            m_database.Close(); // opening looks closer
        }
        if (status == eRS_Failed || status == eRS_Newer) {
            return status;
        }
        // Another file has come, or this one must go.
    }
    return eRS_Failed;
}

ERegistryStatus RegistryStore::makeReady(EAccess access)
{
    std::string path = m_place.findFolder();
    if (!path.starts_with('/')) {
        return eRS_Failed;
    }
    path += '/';
    path += m_place.fileName;
    // What could only be read may by now be written.
    const bool isReady = m_database.IsOpen() && path == m_path && isCurrent()
        && (access == eA_Read || !m_database.IsReadOnly());
    return isReady ? eRS_Done : open(path, access);
}

/// Opens the file at `path`. eRS_Done: it is open; eRS_Unreadable: it is worth another attempt.
ERegistryStatus RegistryStore::open(const std::string& path, EAccess access)
{
    const std::string folder = folderOf(path);
    if (access != eA_Create && identify(path) == SFileIdentity{}) {
        m_database.Close();
        return eRS_Missing;
    }
    if (access == eA_Create && !makeFolder(folder, m_place.rights)) {
        return eRS_Failed;
    }
    // Who may only read does without: the lock may be refused to him, or held on purpose.
    FolderLock folderLock(folder);
    const bool isLocked = folderLock.Take();
    if (!isLocked && access != eA_Read) {
        return eRS_Failed;
    }
    letGo(path, access);
    if (access == eA_Create) {
        makeFile(path, m_place.rights & 0666);
    }
    ERegistryStatus status = m_database.Open(path, access == eA_Create);
    if (status == eRS_Unreadable) {
        return isLocked && setAside(path) ? eRS_Unreadable : eRS_Failed;
    }
    if (status == eRS_Newer) {
        report(path, "it stays unused");
    }
    if (status == eRS_Done) {
        m_path = path;
        m_identity = identify(path);
        m_journal = identify(m_database.GetFile() + kJournal);
        if (m_database.HasMoved()) {
            status = eRS_Unreadable;
        } else if (access != eA_Read && m_database.IsReadOnly()) {
            status = eRS_Failed;
        }
    }
    return status;
}

/// Closes what is open, and sees to it that no journal of a file that has gone is taken for one of
/// the file that has come, or will.
void RegistryStore::letGo(const std::string& path, EAccess access)
{
    std::string file = path;
    bool isStale = access == eA_Create && !hasContent(path);
    if (m_database.IsOpen() && path == m_path) {
        file = m_database.GetFile();
        // Before closing: until then the journal's number is not given to another file.
        isStale |= !isCurrent() && m_journal != SFileIdentity{}
            && identify(file + kJournal) == m_journal;
    }
    m_database.Close();
    if (isStale) {
        for (const char* companion : kCompanions) {
            unlink((file + companion).c_str());
        }
    }
}

bool RegistryStore::isCurrent() const { return identify(m_path) == m_identity; }

bool RegistryStore::setAside(const std::string& path)
{
    const std::string& file = m_database.GetFile();
    std::string aside;
    bool isTaken = true;
    for (int number = 1; isTaken; ++number) {
        aside = file + ".unreadable-" + std::to_string(number);
        isTaken = isThere(aside);
        for (const char* companion : kCompanions) {
            isTaken |= isThere(aside + companion);
        }
    }
    // The file goes last: one that is left with its companions gone is found unreadable again, but
    // companions that are left would be taken for those of the next file.
    for (const char* companion : kCompanions) {
        if (rename((file + companion).c_str(), (aside + companion).c_str()) != 0
            && errno != ENOENT) {
            report(path, "it cannot be set aside");
            return false;
        }
    }
    if (rename(file.c_str(), aside.c_str()) != 0) {
        report(path, "it cannot be set aside");
        return false;
    }
    m_reported = {};
    report(path, "it was set aside as \"" + aside + "\"");
    m_reported = {};
    return true;
}

/// Once for each file: a program that reads often would fill its log.
void RegistryStore::report(const std::string& path, const std::string& consequence)
{
    const SFileIdentity file = identify(path);
    if (file == m_reported && file != SFileIdentity{}) {
        return;
    }
    m_reported = file;
    m_report = FromUtf8("The registry's file \"" + path + "\" cannot be used ("
        + m_database.GetReason() + "): " + consequence + ".");
}

} // namespace platform
