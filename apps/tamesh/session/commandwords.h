#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tamesh {

/// What is wrong with a line of commands: the text that the user reads.
class CommandError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// One command of a line, in words.
struct SCommandWords
{
    std::vector<std::string> words; // never empty
    std::string text; // as it stands in the line
    bool isBackground = false; // the next one does not wait for it
};

/// Takes a line apart: `;` ends a command, `&` ends one that goes on in the background, `#` at the
/// start of a word begins a comment. Within double quotes they and blanks are ordinary characters,
/// and a backslash stands before a quotation mark or a backslash that is meant; elsewhere it is a
/// character like others, as in paths of Windows. Throws CommandError.
std::vector<SCommandWords> SplitCommandLine(std::string_view line);

/// The word, in quotes where it needs them, so that SplitCommandLine makes the same of it.
std::string QuoteWord(std::string_view word);

} // namespace tamesh
