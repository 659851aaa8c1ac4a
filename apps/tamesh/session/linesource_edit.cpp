// For builds with libedit.

#include "platform/platformfolders.h"
#include "platform/platformterminal.h"
#include "platform/platformtext.h"
#include "tamesh/session/linesource.h"

#include <histedit.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace tamesh {

namespace {

    constexpr int kHistoryLength = 1000;

    /// Of this user; empty where it cannot be kept.
    std::string getHistoryFile()
    {
        const std::filesystem::path folder
            = std::filesystem::path(platform::GetUserConfigFolder()) / "tabase";
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        return error ? std::string() : (folder / "tamesh_history").string();
    }

    /// What all of them begin with.
    std::string findCommonStart(const std::vector<std::string>& words)
    {
        std::string start = words.front();
        for (const std::string& word : words) {
            const auto end = std::ranges::mismatch(start, word).in1;
            start.erase(end, start.end());
        }
        return start;
    }

    class EditedLines final : public ILineSource
    {
    public:
        explicit EditedLines(Completer completer);
        ~EditedLines() override;
        EditedLines(const EditedLines&) = delete;
        EditedLines& operator=(const EditedLines&) = delete;

        std::optional<std::string> ReadLine(const std::string& prompt) override;

    private:
        static EditedLines& getSelf(EditLine* editor)
        {
            void* self = nullptr;
            el_get(editor, EL_CLIENTDATA, &self);
            return *static_cast<EditedLines*>(self);
        }
        static char* showPrompt(EditLine* editor) { return getSelf(editor).m_prompt.data(); }
        static unsigned char complete(EditLine* editor, int);
        unsigned char completeLine();

        Completer m_completer;
        EditLine* m_editor;
        History* m_history;
        std::string m_prompt;
        std::string m_historyFile = getHistoryFile();
    };

    EditedLines::EditedLines(Completer completer)
        : m_completer(std::move(completer))
        , m_editor(el_init("tamesh", stdin, stdout, stderr))
        , m_history(history_init())
    {
        HistEvent event{};
        history(m_history, &event, H_SETSIZE, kHistoryLength);
        history(m_history, &event, H_SETUNIQUE, 1);
        if (!m_historyFile.empty()) {
            history(m_history, &event, H_LOAD, m_historyFile.c_str());
        }
        el_set(m_editor, EL_CLIENTDATA, this);
        el_set(m_editor, EL_PROMPT, &showPrompt);
        el_set(m_editor, EL_EDITOR, "emacs");
        el_set(m_editor, EL_SIGNAL, 0); // interrupts are taken by a thread that waits for them
        el_set(m_editor, EL_HIST, history, m_history);
        el_set(m_editor, EL_ADDFN, "complete", "Completes a word", &complete);
        el_set(m_editor, EL_BIND, "^I", "complete", nullptr);
        el_source(m_editor, nullptr);
    }

    EditedLines::~EditedLines()
    {
        HistEvent event{};
        if (!m_historyFile.empty()) {
            history(m_history, &event, H_SAVE, m_historyFile.c_str());
        }
        el_end(m_editor);
        history_end(m_history);
    }

    std::optional<std::string> EditedLines::ReadLine(const std::string& prompt)
    {
        m_prompt = prompt;
        int count = 0;
        const char* const text = el_gets(m_editor, &count);
        if (text == nullptr || count <= 0) {
            std::fputc('\n', stdout); // the end of the input leaves the prompt where it is
            std::fflush(stdout);
            return std::nullopt;
        }
        std::string line(text, static_cast<std::size_t>(count));
        while (line.ends_with('\n') || line.ends_with('\r')) {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") != line.npos) {
            HistEvent event{};
            history(m_history, &event, H_ENTER, line.c_str());
        }
        return line;
    }

    unsigned char EditedLines::complete(EditLine* editor, int)
    {
        return getSelf(editor).completeLine();
    }

    unsigned char EditedLines::completeLine()
    {
        const LineInfo* const info = el_line(m_editor);
        const std::string line(info->buffer, info->cursor);
        const std::vector<std::string> words = m_completer(line);
        if (words.empty()) {
            return CC_REFRESH_BEEP;
        }
        const std::size_t blank = line.find_last_of(" \t;&");
        const std::size_t begin = blank == line.npos ? 0 : blank + 1;
        const std::string start = findCommonStart(words);
        if (start.size() > line.size() - begin) {
            el_deletestr(m_editor, static_cast<int>(line.size() - begin));
            el_insertstr(m_editor, start.c_str());
        } else if (words.size() > 1) {
            std::string list = "\n";
            for (const std::string& word : words) {
                list += word + "  ";
            }
            std::fputs((list + "\n").c_str(), stdout);
            std::fflush(stdout);
            return CC_REDISPLAY;
        }
        if (words.size() == 1 && !start.ends_with('/')) {
            el_insertstr(m_editor, " ");
        }
        return CC_REFRESH;
    }

} // namespace

std::unique_ptr<ILineSource> MakeLineSource(const Completer& completer)
{
    if (!platform::IsInputTerminal() || !platform::IsTerminal(platform::eSS_Output)) {
        return std::make_unique<PlainLines>();
    }
    return std::make_unique<EditedLines>(completer);
}

} // namespace tamesh
