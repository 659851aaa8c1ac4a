#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tamesh {

/// Where the lines of a shell come from.
///
/// Threads: one at a time.
class ILineSource
{
public:
    virtual ~ILineSource() = default;
    /// Without its end; nothing at the end of the input. Waits for as long as the user thinks.
    virtual std::optional<std::string> ReadLine(const std::string& prompt) = 0;
};

/// Words that may stand in the place of the last one: what the line holds up to there.
using Completer = std::function<std::vector<std::string>(const std::string& line)>;

/// Where a person types: lines that can be edited, with a history and completion, as far as the
/// system has them; elsewhere, plain ones, and no prompt but on a terminal.
std::unique_ptr<ILineSource> MakeLineSource(const Completer& completer);

/// Lines of standard input as they come.
class PlainLines final : public ILineSource
{
public:
    std::optional<std::string> ReadLine(const std::string& prompt) override;
};

} // namespace tamesh
