#include "tamesh/session/commandwords.h"

#include "tamesh/meshfailure.h"

#include <utility>

namespace tamesh {

namespace {

    bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
    bool isEnd(char c) { return c == ';' || c == '&'; }
    bool isEscaped(char c) { return c == '"' || c == '\\'; }

    /// One pass over a line.
    class Splitter
    {
    public:
        explicit Splitter(std::string_view line)
            : m_line(line)
        {
        }

        std::vector<SCommandWords> Split();

    private:
        bool isAtEnd() const { return m_place == m_line.size(); }
        char get() const { return m_line[m_place]; }
        void takeWord();
        void takeQuoted(std::string& word);
        void endCommand(bool isBackground);

        std::string_view m_line;
        std::size_t m_place = 0;
        std::size_t m_begin = 0; // of the command
        SCommandWords m_command;
        std::vector<SCommandWords> m_commands;
    };

    std::vector<SCommandWords> Splitter::Split()
    {
        while (!isAtEnd() && get() != '#') {
            if (isBlank(get())) {
                ++m_place;
            } else if (isEnd(get())) {
                endCommand(get() == '&');
                ++m_place;
            } else {
                takeWord();
            }
        }
        if (!m_command.words.empty()) {
            endCommand(false);
        }
        return std::move(m_commands);
    }

    void Splitter::takeWord()
    {
        if (m_command.words.empty()) {
            m_begin = m_place;
        }
        std::string word;
        while (!isAtEnd() && !isBlank(get()) && !isEnd(get())) {
            if (get() == '"') {
                takeQuoted(word);
            } else {
                word += get();
                ++m_place;
            }
        }
        m_command.words.push_back(std::move(word));
        m_command.text = m_line.substr(m_begin, m_place - m_begin);
    }

    void Splitter::takeQuoted(std::string& word)
    {
        const std::string_view rest = m_line.substr(m_place);
        for (++m_place; !isAtEnd() && get() != '"'; ++m_place) {
            if (get() == '\\' && m_place + 1 != m_line.size() && isEscaped(m_line[m_place + 1])) {
                ++m_place;
            }
            word += get();
        }
        if (isAtEnd()) {
            throw CommandError("a quotation mark is missing at the end of " + Quote(rest));
        }
        ++m_place;
    }

    void Splitter::endCommand(bool isBackground)
    {
        if (m_command.words.empty()) {
            throw CommandError(
                std::string("there is no command before ") + (isBackground ? "'&'" : "';'"));
        }
        m_command.isBackground = isBackground;
        m_commands.push_back(std::exchange(m_command, {}));
    }

} // namespace

std::vector<SCommandWords> SplitCommandLine(std::string_view line)
{
    return Splitter(line).Split();
}

std::string QuoteWord(std::string_view word)
{
    if (!word.empty() && word.find_first_of(" \t\r\n;&#\"") == word.npos) {
        return std::string(word);
    }
    std::string quoted = "\"";
    for (const char c : word) {
        if (isEscaped(c)) {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + '"';
}

} // namespace tamesh
