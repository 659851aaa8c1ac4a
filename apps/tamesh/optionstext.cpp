#include "tamesh/optionstext.h"

#include "groundwork/tulittleendian.h"
#include "platform/platformtext.h"
#include "tamesh/displaytext.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tamesh {

namespace {

    using platform::SRegistryValue;

    constexpr std::array<std::pair<std::string_view, platform::ERegistryRoot>, 5> kRoots{ {
        { "user", platform::eRo_CurrentUser },
        { "users", platform::eRo_Users },
        { "machine", platform::eRo_LocalMachine },
        { "classes", platform::eRo_ClassesRoot },
        { "config", platform::eRo_CurrentConfig },
    } };

    bool isNumber(const SRegistryValue& value)
    {
        return value.type == platform::eRT_Number && value.data.size() == sizeof(std::uint32_t);
    }

    bool isText(const SRegistryValue& value)
    {
        return value.type == platform::eRT_Text && value.data.size() % sizeof(char16_t) == 0;
    }

    std::uint32_t toNumber(const SRegistryValue& value)
    {
        return TuLoadLittleEndian<std::uint32_t>(value.data.data());
    }

    std::u16string toText(const SRegistryValue& value)
    {
        std::u16string text(value.data.size() / sizeof(char16_t), u'\0');
        for (std::size_t i = 0; i < text.size(); ++i) {
            text[i] = static_cast<char16_t>(
                TuLoadLittleEndian<std::uint16_t>(value.data.data() + i * sizeof(char16_t)));
        }
        return text;
    }

    std::string toHex(std::uint32_t number, std::size_t digits)
    {
        std::string text;
        while (digits-- != 0) {
            text += "0123456789ABCDEF"[number >> (4 * digits) & 15];
        }
        return text;
    }

    /// A surrogate that is half of no pair would be lost on the way through UTF-8.
    bool isHalf(std::u16string_view text, std::size_t i)
    {
        const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
        const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
        return (isHigh(text[i]) && !(i + 1 < text.size() && isLow(text[i + 1])))
            || (isLow(text[i]) && !(i > 0 && isHigh(text[i - 1])));
    }

    /// UTF-8, with %XXXX for each unit that would be misunderstood.
    std::string escape(std::u16string_view text)
    {
        std::u16string escaped;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] < u' ' || text[i] == u'%' || text[i] == 0x7F || isHalf(text, i)) {
                escaped += u'%' + platform::FromUtf8(toHex(text[i], 4));
            } else {
                escaped += text[i];
            }
        }
        return platform::ToUtf8(escaped);
    }

    std::uint32_t parseNumber(std::string_view text, int base)
    {
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(text.begin(), text.end(), number, base);
        if (error != std::errc() || end != text.end()) {
            throw std::invalid_argument("'" + MakeDisplayText(text) + "' is no number of 32 bits");
        }
        return number;
    }

    std::u16string unescape(std::string_view text)
    {
        const std::u16string escaped = platform::FromUtf8(text);
        std::u16string plain;
        for (std::size_t i = 0; i < escaped.size(); ++i) {
            if (escaped[i] == u'%') {
                const std::u16string_view digits = std::u16string_view(escaped).substr(i + 1, 4);
                if (digits.size() != 4) {
                    throw std::invalid_argument("behind % there are not four digits");
                }
                plain += static_cast<char16_t>(parseNumber(platform::ToUtf8(digits), 16));
                i += digits.size();
            } else {
                plain += escaped[i];
            }
        }
        return plain;
    }

    std::vector<unsigned char> toBytes(std::uint32_t number)
    {
        std::vector<unsigned char> bytes(sizeof(number));
        TuStoreLittleEndian<std::uint32_t>(bytes.data(), number);
        return bytes;
    }

    std::vector<unsigned char> toBytes(std::u16string_view text)
    {
        std::vector<unsigned char> bytes(text.size() * sizeof(char16_t));
        for (std::size_t i = 0; i < text.size(); ++i) {
            TuStoreLittleEndian<std::uint16_t>(bytes.data() + i * sizeof(char16_t), text[i]);
        }
        return bytes;
    }

    std::string formatBytes(const std::vector<unsigned char>& bytes)
    {
        std::string text;
        for (const unsigned char byte : bytes) {
            text += toHex(byte, 2);
        }
        return text;
    }

    std::vector<unsigned char> parseBytes(std::string_view text)
    {
        if (text.size() % 2 != 0) {
            throw std::invalid_argument("there is half a byte");
        }
        std::vector<unsigned char> bytes;
        for (std::size_t i = 0; i < text.size(); i += 2) {
            bytes.push_back(static_cast<unsigned char>(parseNumber(text.substr(i, 2), 16)));
        }
        return bytes;
    }

    /// Up to the next tab, which is taken along.
    std::string_view takeField(std::string_view& line)
    {
        const std::size_t length = line.find('\t');
        if (length == line.npos) {
            throw std::invalid_argument("there are not five fields with tabs between them");
        }
        const std::string_view field = line.substr(0, length);
        line.remove_prefix(length + 1);
        return field;
    }

} // namespace

platform::ERegistryRoot GetOptionRoot(std::string_view name)
{
    for (const auto& [rootName, root] : kRoots) {
        if (rootName == name) {
            return root;
        }
    }
    throw std::invalid_argument("there is no category '" + MakeDisplayText(name) + "'");
}

std::string_view GetOptionRootName(platform::ERegistryRoot root)
{
    for (const auto& [name, namedRoot] : kRoots) {
        if (namedRoot == root) {
            return name;
        }
    }
    return {};
}

std::string FormatOptionValue(const SRegistryValue& value)
{
    if (isNumber(value)) {
        return std::to_string(toNumber(value));
    }
    if (isText(value)) {
        return "\"" + MakeDisplayText(platform::ToUtf8(toText(value))) + "\"";
    }
    return "type " + std::to_string(value.type) + ", " + std::to_string(value.data.size())
        + " bytes";
}

std::string FormatOption(const SOption& option)
{
    const SRegistryValue& value = option.value;
    std::string line = std::string(GetOptionRootName(option.root)) + "\t" + escape(option.key)
        + "\t" + escape(value.name) + "\t";
    if (isNumber(value)) {
        return line + "number\t" + std::to_string(toNumber(value));
    }
    if (isText(value)) {
        return line + "text\t" + escape(toText(value));
    }
    return line + std::to_string(value.type) + "\t" + formatBytes(value.data);
}

SOption ParseOption(std::string_view line)
{
    SOption option;
    option.root = GetOptionRoot(takeField(line));
    option.key = unescape(takeField(line));
    SRegistryValue& value = option.value;
    value.name = unescape(takeField(line));
    const std::string_view type = takeField(line);
    if (type == "number") {
        value.type = platform::eRT_Number;
        value.data = toBytes(parseNumber(line, 10));
    } else if (type == "text") {
        value.type = platform::eRT_Text;
        value.data = toBytes(unescape(line));
    } else {
        value.type = static_cast<platform::ERegistryType>(parseNumber(type, 10));
        value.data = parseBytes(line);
    }
    return option;
}

SRegistryValue MakeOptionValue(std::string_view name, std::string_view text)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
    const bool isWhole = error == std::errc() && end == text.end() && number >= INT32_MIN
        && number <= std::int64_t{ UINT32_MAX };
    if (!isWhole) {
        return MakeTextOptionValue(name, text);
    }
    return { platform::FromUtf8(name), platform::eRT_Number,
        toBytes(static_cast<std::uint32_t>(number)) };
}

SRegistryValue MakeTextOptionValue(std::string_view name, std::string_view text)
{
    return { platform::FromUtf8(name), platform::eRT_Text, toBytes(platform::FromUtf8(text)) };
}

} // namespace tamesh
