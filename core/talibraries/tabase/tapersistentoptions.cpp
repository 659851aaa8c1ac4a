#include "tabase/tapersistentoptions.h"

#include "groundwork/tuexception.h"
#include "groundwork/tulittleendian.h"
#include "groundwork/tuloglistenermanager.h"
#include "platform/platformregistry.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using ECategory = TaPersistentOptions::EPersistentOptionsCategory;

constexpr char16_t kSource[] = u"core/talibraries/tabase/tapersistentoptions";

// The lines of the contract; they never move.
constexpr unsigned int kLineReadKind = 232;
constexpr unsigned int kLineWriteKind = 266;

constexpr unsigned long kMostUnitsOfVariant = 1024;

static_assert(int{ platform::eRo_ClassesRoot } == TaPersistentOptions::ePOC_ClassesRoot
    && int{ platform::eRo_CurrentUser } == TaPersistentOptions::ePOC_CurrentUser
    && int{ platform::eRo_LocalMachine } == TaPersistentOptions::ePOC_LocalMachine
    && int{ platform::eRo_Users } == TaPersistentOptions::ePOC_Users
    && int{ platform::eRo_CurrentConfig } == TaPersistentOptions::ePOC_CurrentConfig);

/// Lets the log hear what the registry has to tell, for as long as this library is there.
class ReportsToLog
{
public:
    ReportsToLog()
        : m_former(platform::SetRegistryReport(tellLog))
    {
    }
    ~ReportsToLog() { platform::SetRegistryReport(m_former); }
    ReportsToLog(const ReportsToLog&) = delete;
    ReportsToLog& operator=(const ReportsToLog&) = delete;

private:
    static void tellLog(std::u16string_view text)
    {
        TuLogListenerManager::GetInstance().NotifyListeners(eLL_Warning, kSource, __LINE__, text);
    }

    const platform::RegistryReport m_former;
};

platform::ERegistryRoot rootOf(ECategory category)
{
    static const ReportsToLog s_reports;
    return static_cast<platform::ERegistryRoot>(category);
}

/// `number` is what stays of bytes that the value does not have.
int readNumber(const CString& key, const CString& name, std::uint32_t& number, ECategory category)
{
    std::array<unsigned char, sizeof(number)> bytes;
    TuStoreLittleEndian(bytes.data(), number);
    std::vector<unsigned char> data;
    if (!platform::ReadRegistry(rootOf(category), key, name, bytes.size(), data)) {
        return 0;
    }
    std::copy(data.begin(), data.end(), bytes.begin());
    number = TuLoadLittleEndian<std::uint32_t>(bytes.data());
    return 1;
}

int writeNumber(const CString& key, const CString& name, std::uint32_t number, ECategory category)
{
    std::array<unsigned char, sizeof(number)> bytes;
    TuStoreLittleEndian(bytes.data(), number);
    return platform::WriteRegistry(
               rootOf(category), key, name, platform::eRT_Number, bytes.data(), bytes.size())
        ? 1
        : 0;
}

/// For numbers of other types, whose low 32 bits are read.
template <class Number>
int readAs(const CString& key, const CString& name, Number& value, ECategory category)
{
    auto number = static_cast<std::uint32_t>(value);
    const int result = readNumber(key, name, number, category);
    if (result != 0) {
        value = static_cast<Number>(number);
    }
    return result;
}

TuException unsupported(unsigned int line, TuVariant::EVariantType kind)
{
    return TuException(kSource, line,
        std::invalid_argument(
            "options do not hold variants of kind " + std::to_string(static_cast<int>(kind))));
}

} // namespace

int TaPersistentOptions::ReadOption(
    const CString& key, const CString& name, bool& value, EPersistentOptionsCategory category)
{
    std::uint32_t number = 0;
    const int result = readNumber(key, name, number, category);
    if (result != 0) {
        value = number == 1;
    }
    return result;
}

int TaPersistentOptions::ReadOption(
    const CString& key, const CString& name, int& value, EPersistentOptionsCategory category)
{
    return readAs(key, name, value, category);
}

int TaPersistentOptions::ReadOption(const CString& key, const CString& name, unsigned int& value,
    EPersistentOptionsCategory category)
{
    return readAs(key, name, value, category);
}

int TaPersistentOptions::ReadOption(const CString& key, const CString& name, unsigned long& value,
    EPersistentOptionsCategory category)
{
    return readAs(key, name, value, category);
}

int TaPersistentOptions::ReadOption(const CString& key, const CString& name, CString& value,
    unsigned long maxChars, EPersistentOptionsCategory category)
{
    std::vector<unsigned char> data;
    const std::size_t maxBytes
        = std::min<std::size_t>(maxChars, data.max_size() / sizeof(char16_t)) * sizeof(char16_t);
    if (!platform::ReadRegistry(rootOf(category), key, name, maxBytes, data)) {
        return 0;
    }
    data.resize(data.size() + data.size() % sizeof(char16_t)); // half a unit: the rest is 0
    std::u16string text;
    text.reserve(data.size() / sizeof(char16_t));
    for (std::size_t i = 0; i < data.size(); i += sizeof(char16_t)) {
        const auto unit = static_cast<char16_t>(TuLoadLittleEndian<std::uint16_t>(&data[i]));
        if (unit == u'\0') {
            break;
        }
        text += unit;
    }
    value = std::move(text);
    return 1;
}

int TaPersistentOptions::ReadOption(const CString& key, const CString& name, TuVariant& value,
    TuVariant::EVariantType kind, EPersistentOptionsCategory category)
{
    int result = 0;
    switch (kind) {
    case TuVariant::eVT_Bool:
    case TuVariant::eVT_Int32:
    case TuVariant::eVT_UInt32: {
        std::uint32_t number = 0;
        result = readNumber(key, name, number, category);
        if (result != 0) {
            value = kind == TuVariant::eVT_UInt32 ? TuVariant(number)
                                                  : TuVariant(static_cast<std::int32_t>(number));
        }
        return result;
    }
    case TuVariant::eVT_NarrowText:
    case TuVariant::eVT_PathText:
    case TuVariant::eVT_WideText: {
        CString text;
        result = ReadOption(key, name, text, kMostUnitsOfVariant, category);
        if (result != 0) {
            value = text;
        }
        return result;
    }
    case TuVariant::eVT_Null:
    case TuVariant::eVT_Int64:
    case TuVariant::eVT_Double:
        break;
    }
    throw unsupported(kLineReadKind, kind);
}

int TaPersistentOptions::WriteOption(
    const CString& key, const CString& name, bool value, EPersistentOptionsCategory category)
{
    return writeNumber(key, name, value ? 1 : 0, category);
}

int TaPersistentOptions::WriteOption(
    const CString& key, const CString& name, int value, EPersistentOptionsCategory category)
{
    return writeNumber(key, name, static_cast<std::uint32_t>(value), category);
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name, unsigned int value,
    EPersistentOptionsCategory category)
{
    return writeNumber(key, name, value, category);
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name, unsigned long value,
    EPersistentOptionsCategory category)
{
    return writeNumber(key, name, static_cast<std::uint32_t>(value), category);
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name, const CString& value,
    EPersistentOptionsCategory category)
{
    std::vector<unsigned char> data(value.GetLength() * sizeof(char16_t));
    for (std::size_t i = 0; i < value.GetLength(); ++i) {
        TuStoreLittleEndian(&data[i * sizeof(char16_t)], static_cast<std::uint16_t>(value[i]));
    }
    return platform::WriteRegistry(
               rootOf(category), key, name, platform::eRT_Text, data.data(), data.size())
        ? 1
        : 0;
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name, const char16_t* value,
    EPersistentOptionsCategory category)
{
    return WriteOption(key, name, CString(value), category);
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name, const wchar_t* value,
    EPersistentOptionsCategory category)
{
    return WriteOption(key, name, CString(value), category);
}

int TaPersistentOptions::WriteOption(const CString& key, const CString& name,
    const TuVariant& value, EPersistentOptionsCategory category)
{
    switch (value.GetType()) {
    case TuVariant::eVT_Int32:
    case TuVariant::eVT_UInt32:
        return writeNumber(key, name, static_cast<std::uint32_t>(value.ToInt64()), category);
    case TuVariant::eVT_WideText:
        return WriteOption(key, name, value.ToString(), category);
    default:
        break;
    }
    throw unsupported(kLineWriteKind, value.GetType());
}
