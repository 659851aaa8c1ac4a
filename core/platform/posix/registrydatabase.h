#pragma once

#include "platform/platformregistry.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace platform {

/// How long to wait for other processes; each of them has the file for moments only.
constexpr int kRegistryPatienceMs = 4000;

/// What came of an operation on a file of the registry.
enum ERegistryStatus
{
    eRS_Done,
    eRS_Missing, // there is nothing of that name
    eRS_Failed, // refused, or kept waiting for too long
    eRS_Unreadable, // damaged, or no file of the registry at all
    eRS_Newer, // of a later version of this library
};

/// A key or a name as a file keeps it, in UTF-8: as spelled, and in one case for comparing. The
/// parts of a key are joined by "\".
struct SRegistryText
{
    std::string spelled;
    std::string folded;
};

/// Each unit in its capital form, where it has one; in UTF-8.
std::string FoldRegistryText(std::u16string_view text);

/// One file of the registry, held open: a database of SQLite with a table of keys and one of values
/// (docs/format.md). It keeps the connection and prepared statements, never values.
///
/// Threads: one at a time, and never across a fork.
/// Failure: the status, and GetReason(); an operation that is not done has changed nothing.
class RegistryDatabase
{
public:
    /// eRS_Missing where the file is not there, or empty, and may not be created.
    ERegistryStatus Open(const std::string& path, bool mayCreate);
    void Close();

    bool IsOpen() const { return m_connection != nullptr; }
    bool IsReadOnly() const;
    /// Whether another file, or none, has taken the place of the one that is open.
    bool HasMoved() const;
    /// The file behind symbolic links: others of its own lie beside it. Known from Open on, even
    /// where that has failed.
    const std::string& GetFile() const { return m_file; }
    /// Why the latest operation failed.
    const std::string& GetReason() const { return m_reason; }

    // Keys and names are folded, but for those that may be new.
    ERegistryStatus Read(ERegistryRoot root, const std::string& key, const std::string& name,
        std::size_t maxBytes, std::vector<unsigned char>& data, ERegistryType* type);
    ERegistryStatus Write(ERegistryRoot root, const SRegistryText& key, const SRegistryText& name,
        ERegistryType type, const void* data, std::size_t size);
    ERegistryStatus ListKeys(
        ERegistryRoot root, const std::string& key, std::vector<std::u16string>& names);
    ERegistryStatus ListValues(
        ERegistryRoot root, const std::string& key, std::vector<SRegistryValue>& values);
    ERegistryStatus RemoveKey(ERegistryRoot root, const std::string& key);

private:
    class Query;
    class Transaction;
    enum EStatement
    {
        eS_Begin,
        eS_Commit,
        eS_Rollback,
        eS_Read,
        eS_AddKey,
        eS_SetValue,
        eS_Count_
    };
    struct SCloser
    {
        void operator()(sqlite3* connection) const;
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, SCloser>;

    ERegistryStatus connect(const std::string& path, bool mayCreate);
    ERegistryStatus recognise(bool mayCreate);
    ERegistryStatus create();
    ERegistryStatus check();
    ERegistryStatus hasKey(ERegistryRoot root, const std::string& key);
    bool prepare(const char* text, Statement& statement);
    bool execute(const char* texts);
    bool readNumber(const char* text, long long& number);
    ERegistryStatus fail();
    ERegistryStatus fail(ERegistryStatus status, const char* reason);

    std::string m_file;
    std::string m_reason;
    std::unique_ptr<sqlite3, SCloser> m_connection;
    std::array<Statement, eS_Count_> m_statements; // go before the connection
};

} // namespace platform
