#include "tamesh/session/shell.h"

#include "platform/platformterminal.h"
#include "tamesh/guard.h"
#include "tamesh/session/commandparser.h"
#include "tamesh/session/linereader.h"
#include "tamesh/session/session.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace tamesh {

namespace {

    /// One run of a shell.
    class Shell
    {
    public:
        Shell(IConsole& console, TuEvent& interrupt, Settings& settings)
            : m_console(console)
            , m_interrupt(interrupt)
            , m_session(console, settings)
        {
        }

        EExitCode Do(const std::string& file, ILineSource* lines);

    private:
        bool carryOut(const std::string& line);
        void sayInterrupted(const SCommand& next);
        void forgetInterrupt();

        IConsole& m_console;
        TuEvent& m_interrupt;
        Session m_session;
        EExitCode m_code = eEC_Done;
    };

    EExitCode Shell::Do(const std::string& file, ILineSource* lines)
    {
        const std::unique_ptr<ILineSource> usual
            = lines != nullptr ? nullptr : MakeLineSource([this](const std::string& line) {
                  return CompleteLine(m_session.GetTree(), line);
              });
        LineReader reader(lines != nullptr ? *lines : *usual, m_session.GetCoordinator());
        if (!reader.Start()) {
            throw TuException(TU_HERE);
        }
        if (!file.empty()) {
            carryOut("open " + QuoteWord(file));
        }
        for (bool goesOn = true; goesOn && !m_session.GetPrinter().IsOutputLost();) {
            reader.Ask();
            m_session.GetPrinter().SetPromptShown(platform::IsInputTerminal());
            const std::optional<std::string> line = m_session.GetCoordinator().WaitForLine();
            m_session.GetPrinter().SetPromptShown(false);
            goesOn = line.has_value() && carryOut(*line);
        }
        const EExitCode code = m_session.Wait();
        if (m_session.GetPrinter().IsOutputLost()) {
            m_console.WriteError("standard output: cannot be written\n");
            return eEC_Failed;
        }
        return m_code != eEC_Done ? m_code : code;
    }

    /// False where the session is to end.
    bool Shell::carryOut(const std::string& line)
    {
        std::vector<SCommand> commands;
        try {
            commands = ParseCommandLine(line);
        } catch (const CommandError& error) {
            m_session.GetPrinter().PrintNotice(std::string(error.what()) + "\n");
            m_code = eEC_WrongUsage;
            return true;
        }
        forgetInterrupt();
        for (const SCommand& command : commands) {
            if (&command != &commands.front() && m_console.GetInterrupt().IsSet()) {
                sayInterrupted(command); // the rest of the line is not begun
                break;
            }
            if (command.id == eCI_Quit) {
                return false;
            }
            m_code = m_session.Execute(command);
        }
        forgetInterrupt(); // one at the prompt is then a first one, which does not end the program
        return true;
    }

    /// One that came between two commands has broken none that could say so.
    void Shell::sayInterrupted(const SCommand& next)
    {
        if (m_code != eEC_Interrupted) {
            m_session.GetPrinter().PrintNotice(next.text + ": interrupted\n");
            m_code = eEC_Interrupted;
        }
    }

    /// One that came while nothing was to be interrupted, or what it has broken has ended.
    void Shell::forgetInterrupt()
    {
        if (m_interrupt.IsSet()) {
            m_session.Wait();
            m_interrupt.Reset();
        }
    }

    void addFiles(std::vector<std::string>& words, const std::string& start)
    {
        const std::size_t slash = start.rfind('/');
        const std::string folder = slash == start.npos ? "" : start.substr(0, slash + 1);
        std::error_code error;
        const std::filesystem::path path
            = CString::FromUtf8(folder.empty() ? "." : folder).GetView();
        for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end;
             entry.increment(error)) {
            std::string name = CString(entry->path().filename().u16string()).ToUtf8();
            if (entry->is_directory(error)) {
                name += '/';
            }
            if ((folder + name).starts_with(start) && !name.starts_with('.')) {
                words.push_back(folder + name);
            }
        }
    }

} // namespace

EExitCode RunShell(IConsole& console, TuEvent& interrupt, Settings& settings,
    const std::string& file, ILineSource* lines)
{
    EExitCode result = eEC_Done;
    const EExitCode code = Guard(
        console, "session", [&] { result = Shell(console, interrupt, settings).Do(file, lines); });
    return code != eEC_Done ? code : result;
}

std::vector<std::string> CompleteLine(const SessionTree& tree, const std::string& line)
{
    const std::size_t blank = line.find_last_of(" \t;&");
    const std::string start = blank == line.npos ? line : line.substr(blank + 1);
    const std::string_view before = std::string_view(line).substr(0, line.size() - start.size());
    const std::size_t last = before.find_last_not_of(" \t");
    const bool isCommand = last == before.npos || before[last] == ';' || before[last] == '&';
    std::vector<std::string> words = isCommand ? GetCommandNames() : tree.GetNames();
    std::erase_if(words, [&](const std::string& word) { return !word.starts_with(start); });
    if (!isCommand) {
        addFiles(words, start);
    }
    std::ranges::sort(words);
    return words;
}

} // namespace tamesh
