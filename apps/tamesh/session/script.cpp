#include "tamesh/session/script.h"

#include "tamesh/files.h"
#include "tamesh/guard.h"
#include "tamesh/meshlines.h"
#include "tamesh/session/commandparser.h"
#include "tamesh/session/session.h"

#include <algorithm>

namespace tamesh {

namespace {

    constexpr std::uint64_t kMostBytes = std::uint64_t{ 16 } << 20;

    std::string readScript(const std::string& name)
    {
        InputFile file(name);
        if (file.GetSize() > kMostBytes) {
            throw MeshFailure(TU_HERE, name, 0, "is longer than 16 MiB, and so no script");
        }
        std::string text(file.GetSize(), '\0');
        text.resize(file.GetStream().ReadBuffer(text.data(), text.size()));
        return text;
    }

    SCommand makeOpen(const std::string& file)
    {
        SCommand command;
        command.id = eCI_Open;
        command.input = file;
        command.text = "open " + QuoteWord(file);
        return command;
    }

    /// One run of a script.
    class Run
    {
    public:
        Run(IConsole& console, Settings& settings, const SRunOptions& options)
            : m_console(console)
            , m_session(console, settings)
            , m_options(options)
        {
        }

        EExitCode Do(const std::vector<SScriptCommand>& commands)
        {
            execute(makeOpen(m_options.file));
            for (const SScriptCommand& command : commands) {
                if (mustStop() || command.command.id == eCI_Quit) {
                    break;
                }
                if (execute(command.command) == eEC_Failed && command.command.id != eCI_Wait) {
                    m_session.GetPrinter().PrintNotice(m_options.script + ":"
                        + std::to_string(command.line) + ": failed: " + command.command.text
                        + "\n");
                }
            }
            take(m_session.Wait());
            if (m_session.GetPrinter().IsOutputLost()) {
                m_console.WriteError("standard output: cannot be written\n");
                take(eEC_Failed);
            }
            return m_console.GetInterrupt().IsSet() ? eEC_Interrupted : m_code;
        }

    private:
        EExitCode execute(const SCommand& command)
        {
            const EExitCode code = m_session.Execute(command);
            take(code);
            return code;
        }
        void take(EExitCode code) { m_code = m_code == eEC_Done ? code : m_code; }
        bool mustStop() const
        {
            return m_console.GetInterrupt().IsSet() || m_session.GetPrinter().IsOutputLost()
                || (m_code != eEC_Done && !m_options.isKeptGoing);
        }

        IConsole& m_console;
        Session m_session;
        const SRunOptions& m_options;
        EExitCode m_code = eEC_Done;
    };

} // namespace

std::vector<SScriptCommand> ParseScript(std::string_view text, const std::string& name)
{
    std::vector<SScriptCommand> commands;
    text = WithoutByteOrderMark(text);
    for (std::uint64_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        try {
            for (SCommand& command : ParseCommandLine(text.substr(0, end))) {
                commands.push_back({ number, std::move(command) });
            }
        } catch (const CommandError& error) {
            throw MeshFailure(TU_HERE, name, number, error.what());
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return commands;
}

EExitCode RunScript(IConsole& console, Settings& settings, const SRunOptions& options)
{
    std::vector<SScriptCommand> commands;
    EExitCode code = Guard(console, options.script,
        [&] { commands = ParseScript(readScript(options.script), options.script); });
    if (code != eEC_Done) {
        return code;
    }
    EExitCode result = eEC_Done;
    code
        = Guard(console, "session", [&] { result = Run(console, settings, options).Do(commands); });
    return code != eEC_Done ? code : result;
}

} // namespace tamesh
