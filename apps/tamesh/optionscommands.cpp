#include "tamesh/optionscommands.h"

#include "platform/platformtext.h"
#include "tamesh/displaytext.h"
#include "tamesh/files.h"
#include "tamesh/guard.h"
#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tamesh {

namespace {

    constexpr std::string_view kFormatLine = "tamesh options 1";

    /// The key as it is shown.
    std::string describe(platform::ERegistryRoot root, const std::u16string& key)
    {
        return std::string(GetOptionRootName(root)) + ": " + MakeDisplayText(platform::ToUtf8(key));
    }

    /// Calls take(option) for each value of the key and of those below it, key by key, and
    /// miss(key) for a key below it that cannot be read, by rights or because it has just gone.
    template <class Take, class Miss>
    void forEachOption(const IConsole& console, platform::ERegistryRoot root,
        const std::u16string& top, Take&& take, Miss&& miss)
    {
        std::vector<std::u16string> open{ top };
        while (!open.empty()) {
            CheckInterrupt(console);
            const std::u16string key = open.back();
            open.pop_back();
            std::vector<platform::SRegistryValue> values;
            std::vector<std::u16string> names;
            if (!platform::ListRegistryValues(root, key, values)
                || !platform::ListRegistryKeys(root, key, names)) {
                if (key == top) {
                    throw std::runtime_error("there is no such key");
                }
                miss(key);
                continue;
            }
            for (platform::SRegistryValue& value : values) {
                take(SOption{ root, key, std::move(value) });
            }
            for (auto name = names.rbegin(); name != names.rend(); ++name) {
                open.push_back(key.empty() ? *name : key + u"\\" + *name);
            }
        }
    }

    void write(const SOption& option)
    {
        if (!platform::WriteRegistry(option.root, option.key, option.value.name, option.value.type,
                option.value.data.data(), option.value.data.size())) {
            throw std::runtime_error(
                "the value '" + platform::ToUtf8(option.value.name) + "' cannot be written");
        }
    }

    std::string readAll(const std::string& fileName)
    {
        constexpr std::uint64_t kLargest = 64 << 20;
        InputFile file(fileName);
        if (file.GetSize() > kLargest) {
            throw MeshFailure(TU_HERE, fileName, 0, "is too large for exported options");
        }
        std::string text(static_cast<std::size_t>(file.GetSize()), '\0');
        text.resize(
            static_cast<std::size_t>(file.GetStream().ReadBuffer(text.data(), text.size())));
        return text;
    }

    std::vector<SOption> parse(const std::string& fileName, std::string_view text)
    {
        std::vector<SOption> options;
        std::uint64_t number = 0;
        do { // a file without lines lacks the first one
            ++number;
            const std::size_t length = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, length);
            text.remove_prefix(std::min(length + 1, text.size()));
            line = line.substr(0, line.size() - line.ends_with('\r'));
            try {
                if (number != 1) {
                    options.push_back(ParseOption(line));
                } else if (line != kFormatLine) {
                    throw std::invalid_argument("this is not an export of options");
                }
            } catch (const std::invalid_argument& failure) {
                throw MeshFailure(TU_HERE, fileName, number, failure.what());
            }
        } while (!text.empty());
        return options;
    }

} // namespace

EExitCode ListOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key)
{
    const std::u16string top = platform::FromUtf8(key);
    return Guard(console, describe(root, top), [&] {
        std::string text;
        std::u16string shown;
        const auto showValue = [&](const SOption& option) {
            if (text.empty() || option.key != shown) {
                shown = option.key;
                text += describe(root, shown) + "\n";
            }
            text += "  " + MakeDisplayText(platform::ToUtf8(option.value.name)) + " = "
                + FormatOptionValue(option.value) + "\n";
        };
        forEachOption(console, root, top, showValue, [&](const std::u16string& missed) {
            text += describe(root, missed) + "\n  (cannot be read)\n";
        });
        WriteResult(console, text);
    });
}

EExitCode GetOption(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const std::string& name)
{
    const std::u16string top = platform::FromUtf8(key);
    return Guard(console, describe(root, top), [&] {
        platform::SRegistryValue value{ platform::FromUtf8(name), {}, {} };
        if (!platform::ReadRegistry(root, top, value.name, SIZE_MAX, value.data, &value.type)) {
            throw std::runtime_error("there is no value '" + name + "'");
        }
        WriteResult(console, FormatOptionValue(value) + "\n");
    });
}

EExitCode SetOption(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const platform::SRegistryValue& value)
{
    const std::u16string top = platform::FromUtf8(key);
    return Guard(console, describe(root, top), [&] { write({ root, top, value }); });
}

EExitCode RemoveOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key)
{
    const std::u16string top = platform::FromUtf8(key);
    return Guard(console, describe(root, top), [&] {
        if (!platform::RemoveRegistryKey(root, top)) {
            throw std::runtime_error("there is no such key, or it cannot be removed");
        }
    });
}

EExitCode ExportOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const std::string& fileName)
{
    return Guard(console, fileName, [&] {
        std::string text = std::string(kFormatLine) + "\n";
        forEachOption(
            console, root, platform::FromUtf8(key),
            [&](const SOption& option) { text += FormatOption(option) + "\n"; },
            [&](const std::u16string& missed) {
                throw std::runtime_error(
                    "not written, for the key " + describe(root, missed) + " cannot be read");
            });
        OutputFile file(fileName);
        file.GetStream().WriteBuffer(text.data(), text.size());
        file.Commit();
    });
}

EExitCode ImportOptions(IConsole& console, const std::string& fileName)
{
    return Guard(console, fileName, [&] {
        for (const SOption& option : parse(fileName, readAll(fileName))) {
            CheckInterrupt(console);
            write(option);
        }
    });
}

} // namespace tamesh
