#include "tamesh/session/commandparser.h"

#include "tamesh/coordinateform.h"
#include "tamesh/meshfailure.h"
#include "tamesh/optionforms.h"

#include <algorithm>
#include <array>
#include <map>

namespace tamesh {

namespace {

    constexpr std::array kColours{ eMC_Height, eMC_Curvature, eMC_Component, eMC_Distance };

    std::map<std::string, EMeshColours> getColours()
    {
        std::map<std::string, EMeshColours> colours;
        for (const EMeshColours kind : kColours) {
            colours.emplace(GetColoursName(kind), kind);
        }
        return colours;
    }

    /// One command: its options, as words, and what becomes of them.
    class Form
    {
    public:
        /// `name` and `what` as the help shows them.
        Form(const std::string& name, const std::string& what)
            : m_app(what, name)
        {
            m_app.allow_windows_style_options(false); // the same words everywhere
        }
        Form(const Form&) = delete;
        Form& operator=(const Form&) = delete;

        void Describe(ECommandId id);
        SCommand Parse(const std::vector<std::string>& words);
        std::string GetHelp() const { return m_app.help(); }

    private:
        void addMesh()
        {
            m_app.add_option("MESH", m_command.mesh, "mesh; may be left out where one is open");
        }
        CLI::Option* addOutput(const std::string& what, const std::string& ending)
        {
            return m_app.add_option("-o,--output", m_command.output, what)
                ->check(EndingWith(ending));
        }
        void addVertex(const std::string& option, std::string& word, const std::string& what)
        {
            m_app.add_option(option, word, what)
                ->required()
                ->check(ParsedBy(ParseVertexName, "V|X,Y,Z"));
        }
        CLI::Option* addColours()
        {
            return m_app.add_option("--by", m_colours, "what the colours say")
                ->check(CLI::IsMember(getColours()));
        }
        void addPacking();

        CLI::App m_app;
        SCommand m_command;
        PictureForm m_picture;
        std::string m_from = "0";
        std::string m_to = "0";
        std::string m_colours;
        bool m_isLossless = false;
        unsigned int m_bits = 0;
    };

    void Form::addPacking()
    {
        CLI::Option* bits = m_app.add_option("--bits", m_bits,
            "with coordinates rounded to N bits over the longest side of the box");
        bits->type_name("N")->check(CLI::Range(1U, CoordinateForm::kMostBits));
        m_app.add_flag("--lossless", m_isLossless, "with coordinates bit for bit, as usual")
            ->excludes(bits);
    }

    void Form::Describe(ECommandId id)
    {
        m_command.id = id;
        switch (id) {
        case eCI_Open:
            m_app.add_option("FILE", m_command.input, "mesh or document")->required();
            m_app.add_option("--as", m_command.name, "how the mesh is to be called");
            return;
        case eCI_Path:
            addMesh();
            addVertex("--from", m_from, "vertex, by its number or the nearest to X,Y,Z");
            addVertex("--to", m_to, "vertex");
            addOutput("polyline to write", ".obj");
            return;
        case eCI_Distance:
            addMesh();
            addVertex("--from", m_from, "vertex, by its number or the nearest to X,Y,Z");
            return;
        case eCI_Colour:
            addMesh();
            addColours()->required();
            m_picture.AddAxisTo(m_app);
            return;
        case eCI_Picture:
            addMesh();
            addOutput("picture to write", ".png")->required();
            addColours();
            m_app.add_flag("--path", m_command.withPath, "with the path that was found last");
            m_picture.AddTo(m_app);
            return;
        case eCI_Pack:
            addMesh();
            addPacking();
            return;
        case eCI_Save:
            addMesh();
            addOutput("document to write", ".tadoc")->required();
            return;
        case eCI_Settings:
            m_app.add_option("NAME=VALUE", m_command.assignments, "what is to be set");
            return;
        case eCI_Info:
        case eCI_Components:
        case eCI_Close:
        case eCI_Tree:
            addMesh();
            return;
        case eCI_Locks:
        case eCI_Queues:
        case eCI_Wait:
        case eCI_Quit:
            return;
        case eCI_Help:
            m_app.add_option("COMMAND", m_command.name, "what is to be explained");
            return;
        }
    }

    SCommand Form::Parse(const std::vector<std::string>& words)
    {
        // The parser takes them from the end, and not the name of the command.
        m_app.parse(std::vector<std::string>(words.rbegin(), words.rend() - 1));
        m_command.from = ParseVertexName(m_from).value();
        m_command.to = ParseVertexName(m_to).value();
        m_command.picture = m_picture.Get();
        m_command.colours = m_colours.empty() ? eMC_Stored : getColours().at(m_colours);
        m_command.packing.form
            = m_bits != 0 ? SPackOptions::eF_Quantized : SPackOptions::eF_Lossless;
        m_command.packing.bits = m_bits;
        return m_command;
    }

    struct SEntry
    {
        const char* name;
        ECommandId id;
        const char* what;
    };
    constexpr std::array kEntries{
        SEntry{ "open", eCI_Open, "Opens a mesh, or a document with one" },
        SEntry{ "info", eCI_Info, "Finds the figures of a mesh" },
        SEntry{ "components", eCI_Components, "Finds the components of a mesh" },
        SEntry{ "path", eCI_Path, "Finds the shortest path along edges" },
        SEntry{ "distance", eCI_Distance, "Finds the distances of all vertices from one" },
        SEntry{ "colour", eCI_Colour, "Colours a mesh" },
        SEntry{ "picture", eCI_Picture, "Shows a mesh in a picture" },
        SEntry{ "pack", eCI_Pack, "Packs a mesh: so it is saved" },
        SEntry{ "save", eCI_Save, "Saves a mesh, and all that was found in it, as a document" },
        SEntry{ "close", eCI_Close, "Forgets a mesh" },
        SEntry{ "tree", eCI_Tree, "Shows the data tree" },
        SEntry{ "locks", eCI_Locks, "Shows who holds which part of the tree" },
        SEntry{ "queues", eCI_Queues, "Shows the message handlers and what waits for them" },
        SEntry{ "settings", eCI_Settings, "Shows and changes the settings" },
        SEntry{ "wait", eCI_Wait, "Waits for what goes on in the background" },
        SEntry{ "help", eCI_Help, "Explains the commands" },
        SEntry{ "quit", eCI_Quit, "Ends the session" },
    };

    const SEntry* findEntry(std::string_view name)
    {
        const auto entry = std::ranges::find(kEntries, name, &SEntry::name);
        return entry == kEntries.end() ? nullptr : &*entry;
    }

    std::string describeCommands()
    {
        std::string text;
        for (const SEntry& entry : kEntries) {
            constexpr std::size_t kNameWidth = 14;
            std::string name = std::string("  ") + entry.name;
            name.resize(kNameWidth, ' ');
            text += name + entry.what + "\n";
        }
        return text
            + "A command may end with ';', or with '&': it then goes on in the background.\n"
              "'COMMAND --help' shows its options.\n";
    }

    std::string describeCommand(std::string_view name)
    {
        const SEntry* const entry = findEntry(name);
        if (entry == nullptr) {
            throw CommandError("there is no command " + Quote(name) + "; 'help' shows all");
        }
        Form form(entry->name, entry->what);
        form.Describe(entry->id);
        return form.GetHelp();
    }

    SCommand parse(const SEntry& entry, const std::vector<std::string>& words)
    {
        Form form(entry.name, entry.what);
        form.Describe(entry.id);
        try {
            return form.Parse(words);
        } catch (const CLI::CallForHelp&) {
            SCommand command;
            command.name = entry.name;
            return command;
        } catch (const CLI::ParseError& error) {
            throw CommandError(std::string(entry.name) + ": " + error.what());
        }
    }

} // namespace

SCommand ParseCommand(const SCommandWords& words)
{
    const SEntry* const entry = findEntry(words.words.front());
    if (entry == nullptr) {
        throw CommandError(
            "there is no command " + Quote(words.words.front()) + "; 'help' shows all");
    }
    SCommand command = parse(*entry, words.words);
    if (command.id == eCI_Help) {
        command.help = command.name.empty() ? describeCommands() : describeCommand(command.name);
    }
    command.text = words.text;
    command.isBackground = words.isBackground;
    return command;
}

std::vector<SCommand> ParseCommandLine(std::string_view line)
{
    std::vector<SCommand> commands;
    for (const SCommandWords& words : SplitCommandLine(line)) {
        commands.push_back(ParseCommand(words));
    }
    return commands;
}

std::vector<std::string> GetCommandNames()
{
    std::vector<std::string> names;
    names.reserve(kEntries.size());
    for (const SEntry& entry : kEntries) {
        names.emplace_back(entry.name);
    }
    return names;
}

} // namespace tamesh
