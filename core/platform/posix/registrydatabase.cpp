#include "platform/posix/registrydatabase.h"

#include "platform/platformtext.h"

#include <locale.h>
#include <sqlite3.h>
#include <wctype.h>

#include <algorithm>
#include <utility>

namespace platform {
namespace {

    constexpr long long kApplication = 0x54615265; // "TaRe": marks a file as the registry's
    constexpr long long kVersion = 1;
    constexpr char kSchema[]
        = "BEGIN IMMEDIATE;"
          "CREATE TABLE registry_keys(root INTEGER NOT NULL, parent TEXT NOT NULL,"
          " folded TEXT NOT NULL, name TEXT NOT NULL, PRIMARY KEY(root, parent, folded))"
          " WITHOUT ROWID;"
          "CREATE TABLE registry_values(root INTEGER NOT NULL, key TEXT NOT NULL,"
          " folded TEXT NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
          " PRIMARY KEY(root, key, folded)) WITHOUT ROWID;"
          "PRAGMA application_id=0x54615265;"
          "PRAGMA user_version=1;"
          "COMMIT";

    // The name stays as it was spelled first.
    constexpr char kSetValue[]
        = "INSERT INTO registry_values(root, key, folded, name, type, data)"
          " VALUES(?1, ?2, ?3, ?4, ?5, ?6)"
          " ON CONFLICT DO UPDATE SET type=excluded.type, data=excluded.data";

    // In the order of EStatement.
    constexpr const char* kStatements[] = { "BEGIN IMMEDIATE", "COMMIT", "ROLLBACK",
        "SELECT data, type FROM registry_values WHERE root=?1 AND key=?2 AND folded=?3",
        "INSERT OR IGNORE INTO registry_keys(root, parent, folded, name) VALUES(?1, ?2, ?3, ?4)",
        kSetValue };

    /// Takes the last part off the front of `path`, which becomes that of the key above.
    std::string_view takeLastPart(std::string_view& path)
    {
        const std::size_t separator = path.rfind('\\');
        const std::string_view last = path.substr(separator == path.npos ? 0 : separator + 1);
        path = path.substr(0, separator == path.npos ? 0 : separator);
        return last;
    }

    char16_t foldUnit(char16_t unit)
    {
        if (unit < 0x80) {
            return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
        }
        static const locale_t s_locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        if (s_locale == nullptr) {
            return unit;
        }
        const wint_t capital = towupper_l(unit, s_locale);
        return capital <= 0xFFFF ? static_cast<char16_t>(capital) : unit;
    }

} // namespace

std::string FoldRegistryText(std::u16string_view text)
{
    std::u16string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), foldUnit);
    if (std::all_of(folded.begin(), folded.end(), [](char16_t unit) { return unit < 0x80; })) {
        std::string narrow(folded.size(), '\0'); // most are so, and every read folds two
        std::transform(folded.begin(), folded.end(), narrow.begin(),
            [](char16_t unit) { return static_cast<char>(unit); });
        return narrow;
    }
    return ToUtf8(folded);
}

/// One run of a statement, which is ready for the next when this goes.
class RegistryDatabase::Query
{
public:
    explicit Query(const Statement& statement)
        : m_statement(statement.get())
    {
    }
    ~Query()
    {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// Gives the next of the statement's arguments; texts and bytes must stay until the end.
    Query& operator<<(long long number)
    {
        m_isGood &= sqlite3_bind_int64(m_statement, ++m_arguments, number) == SQLITE_OK;
        return *this;
    }
    Query& operator<<(std::string_view text)
    {
        m_isGood &= sqlite3_bind_text64(m_statement, ++m_arguments, text.data() ? text.data() : "",
                        text.size(), SQLITE_STATIC, SQLITE_UTF8)
            == SQLITE_OK;
        return *this;
    }
    Query& Bytes(const void* data, std::size_t size)
    {
        // A null pointer would be no bytes at all, rather than none of them.
        m_isGood &= sqlite3_bind_blob64(
                        m_statement, ++m_arguments, size != 0 ? data : "", size, SQLITE_STATIC)
            == SQLITE_OK;
        return *this;
    }

    /// SQLITE_ROW or SQLITE_DONE, else the failure.
    int Step() { return m_isGood ? sqlite3_step(m_statement) : SQLITE_ERROR; }

    long long GetNumber(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::string_view GetBytes(int column) const
    {
        // In this order: asking for the bytes may change their number.
        const void* data = sqlite3_column_blob(m_statement, column);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
        return data != nullptr ? std::string_view(static_cast<const char*>(data), size) : "";
    }

private:
    sqlite3_stmt* m_statement;
    int m_arguments = 0;
    bool m_isGood = true;
};

/// What is written while it lives, unless it is committed, is not written.
class RegistryDatabase::Transaction
{
public:
    explicit Transaction(RegistryDatabase& database)
        : m_database(database)
    {
    }
    ~Transaction()
    {
        if (sqlite3_get_autocommit(m_database.m_connection.get()) == 0) {
            Query(m_database.m_statements[eS_Rollback]).Step();
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    bool Begin() { return Query(m_database.m_statements[eS_Begin]).Step() == SQLITE_DONE; }
    bool Commit() { return Query(m_database.m_statements[eS_Commit]).Step() == SQLITE_DONE; }

private:
    RegistryDatabase& m_database;
};

void RegistryDatabase::SCloser::operator()(sqlite3* connection) const { sqlite3_close(connection); }

void RegistryDatabase::SCloser::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

ERegistryStatus RegistryDatabase::Open(const std::string& path, bool mayCreate)
{
    Close();
    m_reason.clear();
    ERegistryStatus status = connect(path, mayCreate);
    if (status == eRS_Done) {
        status = recognise(mayCreate);
    }
    if (status == eRS_Done) {
        status = check();
    }
    if (status != eRS_Done) {
        Close();
    }
    return status;
}

void RegistryDatabase::Close()
{
    for (Statement& statement : m_statements) {
        statement.reset();
    }
    m_connection.reset();
}

bool RegistryDatabase::IsReadOnly() const
{
    return sqlite3_db_readonly(m_connection.get(), "main") != 0;
}

bool RegistryDatabase::HasMoved() const
{
    int hasMoved = 0;
    return sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved)
        != SQLITE_OK
        || hasMoved != 0;
}

ERegistryStatus RegistryDatabase::connect(const std::string& path, bool mayCreate)
{
    m_file = path;
    sqlite3* connection = nullptr;
    // Where the file may not be written, SQLite opens it for reading by itself.
    const int code = sqlite3_open_v2(path.c_str(), &connection,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE
            | (mayCreate ? SQLITE_OPEN_CREATE : 0),
        nullptr);
    m_connection.reset(connection);
    if (code != SQLITE_OK) {
        return connection != nullptr ? fail() : fail(eRS_Failed, "out of memory");
    }
    m_file = sqlite3_db_filename(connection, "main");
    sqlite3_busy_timeout(connection, kRegistryPatienceMs);
    // Who may only read the file needs those beside it, and could not make them.
    int keepFiles = 1;
    sqlite3_file_control(connection, "main", SQLITE_FCNTL_PERSIST_WAL, &keepFiles);
    return eRS_Done;
}

ERegistryStatus RegistryDatabase::recognise(bool mayCreate)
{
    long long application = 0;
    long long version = 0;
    long long entries = 0;
    if (!execute("PRAGMA trusted_schema=OFF") // the file may be anybody's
        || !readNumber("PRAGMA application_id", application)
        || !readNumber("PRAGMA user_version", version)
        || !readNumber("SELECT count(*) FROM sqlite_schema", entries)) {
        return fail();
    }
    if (application == kApplication && version == kVersion) {
        return eRS_Done;
    }
    if (application == kApplication && version > kVersion) {
        return fail(eRS_Newer, "it was written by a later version");
    }
    // An empty file, or one whose making was interrupted.
    if (application == 0 && version == 0 && entries == 0) {
        return mayCreate && !IsReadOnly() ? create() : eRS_Missing;
    }
    return fail(eRS_Unreadable, "it is a database of another kind");
}

ERegistryStatus RegistryDatabase::create()
{
    return execute("PRAGMA journal_mode=WAL") && execute(kSchema) ? eRS_Done : fail();
}

ERegistryStatus RegistryDatabase::check()
{
    // The journal does not stay longer than it was; closing leaves it empty.
    if (!execute("PRAGMA synchronous=FULL; PRAGMA journal_size_limit=0")
        || (!IsReadOnly() && !execute("PRAGMA journal_mode=WAL"))) {
        return fail();
    }
    Statement look;
    if (!prepare("PRAGMA quick_check(1)", look)) {
        return fail();
    }
    Query query(look);
    if (query.Step() != SQLITE_ROW) {
        return fail();
    }
    if (const std::string found(query.GetBytes(0)); found != "ok") {
        return fail(eRS_Unreadable, found.c_str());
    }
    for (std::size_t i = 0; i < m_statements.size(); ++i) {
        if (!prepare(kStatements[i], m_statements[i])) {
            const bool lacksTables = sqlite3_errcode(m_connection.get()) == SQLITE_ERROR;
            const ERegistryStatus status = fail();
            return lacksTables ? eRS_Unreadable : status;
        }
    }
    return eRS_Done;
}

ERegistryStatus RegistryDatabase::Read(ERegistryRoot root, const std::string& key,
    const std::string& name, std::size_t maxBytes, std::vector<unsigned char>& data,
    ERegistryType* type)
{
    Query query(m_statements[eS_Read]);
    query << root << key << name;
    const int code = query.Step();
    if (code != SQLITE_ROW) {
        return code == SQLITE_DONE ? eRS_Missing : fail();
    }
    const std::string_view found = query.GetBytes(0);
    if (found.size() > maxBytes) {
        return eRS_Missing;
    }
    data.assign(found.begin(), found.end());
    if (type != nullptr) {
        *type = static_cast<ERegistryType>(query.GetNumber(1));
    }
    return eRS_Done;
}

ERegistryStatus RegistryDatabase::Write(ERegistryRoot root, const SRegistryText& key,
    const SRegistryText& name, ERegistryType type, const void* data, std::size_t size)
{
    // Of two that read before they write one would fail: the right to write comes first.
    Transaction transaction(*this);
    if (!transaction.Begin()) {
        return fail();
    }
    std::string_view spelledPath = key.spelled;
    std::string_view foldedPath = key.folded;
    while (!foldedPath.empty()) {
        const std::string_view spelledPart = takeLastPart(spelledPath);
        const std::string_view foldedPart = takeLastPart(foldedPath);
        Query query(m_statements[eS_AddKey]);
        query << root << foldedPath << foldedPart << spelledPart;
        if (query.Step() != SQLITE_DONE) {
            return fail();
        }
        if (sqlite3_changes(m_connection.get()) == 0) {
            break; // it was there, and so are those above it
        }
    }
    {
        Query query(m_statements[eS_SetValue]);
        query << root << key.folded << name.folded << name.spelled << type;
        query.Bytes(data, size);
        if (query.Step() != SQLITE_DONE) {
            return fail();
        }
    }
    return transaction.Commit() ? eRS_Done : fail();
}

ERegistryStatus RegistryDatabase::hasKey(ERegistryRoot root, const std::string& key)
{
    std::string_view parent = key;
    const std::string_view folded = takeLastPart(parent);
    if (folded.empty()) {
        return eRS_Done;
    }
    Statement statement;
    if (!prepare(
            "SELECT 1 FROM registry_keys WHERE root=?1 AND parent=?2 AND folded=?3", statement)) {
        return fail();
    }
    Query query(statement);
    query << root << parent << folded;
    const int code = query.Step();
    return code == SQLITE_ROW ? eRS_Done : code == SQLITE_DONE ? eRS_Missing : fail();
}

ERegistryStatus RegistryDatabase::ListKeys(
    ERegistryRoot root, const std::string& key, std::vector<std::u16string>& names)
{
    names.clear();
    Statement statement;
    if (!prepare("SELECT name FROM registry_keys WHERE root=?1 AND parent=?2", statement)) {
        return fail();
    }
    Query query(statement);
    query << root << key;
    int code = SQLITE_ROW;
    while ((code = query.Step()) == SQLITE_ROW) {
        names.push_back(FromUtf8(query.GetBytes(0)));
    }
    std::sort(names.begin(), names.end());
    return code == SQLITE_DONE ? hasKey(root, key) : fail();
}

ERegistryStatus RegistryDatabase::ListValues(
    ERegistryRoot root, const std::string& key, std::vector<SRegistryValue>& values)
{
    values.clear();
    Statement statement;
    if (!prepare(
            "SELECT name, type, data FROM registry_values WHERE root=?1 AND key=?2", statement)) {
        return fail();
    }
    Query query(statement);
    query << root << key;
    int code = SQLITE_ROW;
    while ((code = query.Step()) == SQLITE_ROW) {
        const std::string_view data = query.GetBytes(2);
        values.push_back({ FromUtf8(query.GetBytes(0)),
            static_cast<ERegistryType>(query.GetNumber(1)), { data.begin(), data.end() } });
    }
    std::sort(values.begin(), values.end(),
        [](const SRegistryValue& a, const SRegistryValue& b) { return a.name < b.name; });
    return code == SQLITE_DONE ? hasKey(root, key) : fail();
}

ERegistryStatus RegistryDatabase::RemoveKey(ERegistryRoot root, const std::string& key)
{
    // All keys below have a path that begins with this: "]" is what follows "\".
    const std::string first = key + "\\";
    const std::string behind = key + "]";
    std::string_view parent = key;
    const std::string_view folded = takeLastPart(parent);
    Transaction transaction(*this);
    Statement values;
    Statement below;
    Statement itself;
    if (!transaction.Begin()
        || !prepare("DELETE FROM registry_values WHERE root=?1"
                    " AND (key=?2 OR (key>=?3 AND key<?4))",
            values)
        || !prepare("DELETE FROM registry_keys WHERE root=?1"
                    " AND (parent=?2 OR (parent>=?3 AND parent<?4))",
            below)
        || !prepare(
            "DELETE FROM registry_keys WHERE root=?1 AND parent=?2 AND folded=?3", itself)) {
        return fail();
    }
    for (const Statement* statement : { &values, &below }) {
        Query query(*statement);
        query << root << key << first << behind;
        if (query.Step() != SQLITE_DONE) {
            return fail();
        }
    }
    {
        Query query(itself);
        query << root << parent << folded;
        if (query.Step() != SQLITE_DONE) {
            return fail();
        }
    }
    if (sqlite3_changes(m_connection.get()) == 0) {
        return eRS_Missing;
    }
    return transaction.Commit() ? eRS_Done : fail();
}

bool RegistryDatabase::prepare(const char* text, Statement& statement)
{
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(
        m_connection.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement.reset(prepared);
    return code == SQLITE_OK;
}

bool RegistryDatabase::execute(const char* texts)
{
    return sqlite3_exec(m_connection.get(), texts, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool RegistryDatabase::readNumber(const char* text, long long& number)
{
    Statement statement;
    if (!prepare(text, statement)) {
        return false;
    }
    Query query(statement);
    const bool isThere = query.Step() == SQLITE_ROW;
    number = isThere ? query.GetNumber(0) : 0;
    return isThere;
}

ERegistryStatus RegistryDatabase::fail()
{
    sqlite3* const connection = m_connection.get();
    const int code = sqlite3_errcode(connection) & 0xFF;
    const bool isDamaged = code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
    return fail(isDamaged ? eRS_Unreadable : eRS_Failed, sqlite3_errmsg(connection));
}

ERegistryStatus RegistryDatabase::fail(ERegistryStatus status, const char* reason)
{
    m_reason = reason;
    return status;
}

} // namespace platform
