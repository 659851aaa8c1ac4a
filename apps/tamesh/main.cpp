#include "platform/platformarguments.h"
#include "platform/platformfile.h"
#include "platform/platforminterrupt.h"
#include "platform/platformterminal.h"
#include "tabase/tafilesystem.h"
#include "tamesh/commands.h"
#include "tamesh/coordinateform.h"
#include "tamesh/documentcommands.h"
#include "tamesh/optionforms.h"
#include "tamesh/optionscommands.h"
#include "tamesh/reportcommand.h"
#include "tamesh/session/script.h"
#include "tamesh/session/shell.h"
#include "tamesh/settings.h"
#include "tamesh/tameshstatistics.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

tamesh::EExitCode write(tamesh::IConsole& console, const std::string& text)
{
    if (console.WriteOutput(text)) {
        return tamesh::eEC_Done;
    }
    console.WriteError("standard output: cannot be written\n");
    return tamesh::eEC_Failed;
}

/// What --help and --version ask for.
int answer(tamesh::IConsole& console, const CLI::App& app, const CLI::ParseError& question)
{
    std::ostringstream text;
    app.exit(question, text, text);
    return write(console, text.str());
}

/// Recordings go to the folder that the user named, which is made.
bool prepareRecording(const std::string& folder)
{
    using platform::MakeFolder;
    TaFileSystem::SetSpecialDirectory(TaFileSystem::eSD_UnitTests, CString::FromUtf8(folder));
    const CString classFolder
        = TaFileSystem::GetSystemPath(tamesh::TaMeshStatistics().GetUnitTestDirectory());
    const auto isMade
        = [](const CString& path) { return platform::PathExists(path) || MakeFolder(path); };
    return isMade(TaFileSystem::GetSystemPath(CString::FromUtf8(folder))) && isMade(classFolder);
}

/// The subcommands that work on meshes and documents.
class MeshCommands
{
public:
    MeshCommands(CLI::App& app, tamesh::IConsole& console, tamesh::Settings& settings,
        tamesh::EExitCode& code)
    {
        using namespace tamesh;
        const auto getOptions = [this, &settings] {
            return SViewOptions{ settings.GetDigits(), settings.GetTreeDepth(),
                !m_recordFolder.empty() };
        };
        CLI::App* info = app.add_subcommand("info", "Shows the figures of OFF, OBJ and STL meshes");
        info->add_option("FILE", m_inputs, "mesh (.off, .obj, .stl)")->required();
        info->add_option("--record", m_recordFolder,
            "folder for recordings of the analysis, which replay as tests");
        info->callback([=, this, &console, &code] {
            if (!m_recordFolder.empty() && !prepareRecording(m_recordFolder)) {
                console.WriteError(m_recordFolder + ": cannot be made\n");
                code = eEC_Failed;
                return;
            }
            code = ShowMeshes(console, m_inputs, getOptions());
        });

        CLI::App* show = app.add_subcommand("show", "Shows the figures of packed documents");
        show->add_option("DOC", m_inputs, "document (.tadoc)")->required();
        show->callback(
            [=, this, &console, &code] { code = ShowDocuments(console, m_inputs, getOptions()); });

        CLI::App* pack = app.add_subcommand("pack", "Saves a mesh as a document");
        pack->add_option("FILE", m_input, "mesh (.off, .obj, .stl)")->required();
        pack->add_option("-o,--output", m_output, "document to write")
            ->required()
            ->check(EndingWith(".tadoc"));
        CLI::Option* bits = pack->add_option("--bits", m_bits,
            "packs it, with coordinates rounded to N bits over the longest side of the box");
        bits->type_name("N")->check(CLI::Range(1U, CoordinateForm::kMostBits));
        pack->add_flag("--lossless", m_isLossless, "packs it, with coordinates bit for bit")
            ->excludes(bits);
        pack->callback([=, this, &console, &code] {
            SPackOptions options;
            if (bits->count() != 0) {
                options = { SPackOptions::eF_Quantized, m_bits };
            } else if (m_isLossless) {
                options.form = SPackOptions::eF_Lossless;
            }
            code = PackMesh(console, m_input, m_output, options);
        });

        CLI::App* unpack = app.add_subcommand("unpack", "Saves the mesh in a document");
        unpack->add_option("DOC", m_input, "document (.tadoc)")->required();
        unpack->add_option("-o,--output", m_output, "mesh to write")
            ->required()
            ->check(EndingWith(".off"));
        unpack->callback(
            [this, &console, &code] { code = UnpackDocument(console, m_input, m_output); });

        CLI::App* picture = app.add_subcommand("picture", "Shows a mesh in a picture");
        picture->add_option("FILE", m_input, "mesh (.off, .obj, .stl)")->required();
        picture->add_option("--by", m_coloring, "what the colours say")
            ->required()
            ->check(CLI::IsMember(m_colorings));
        picture->add_option("-o,--output", m_output, "picture to write")
            ->required()
            ->check(EndingWith(".png"));
        m_picture.AddTo(*picture);
        picture->callback([this, &console, &code] {
            code = PictureMesh(
                console, m_input, m_colorings.at(m_coloring), m_output, m_picture.Get());
        });

        CLI::App* path = app.add_subcommand("path", "Finds the shortest path along edges");
        path->add_option("FILE", m_input, "mesh (.off, .obj, .stl)")->required();
        path->add_option("--from", m_from, "vertex, by its number or the nearest to X,Y,Z")
            ->required()
            ->check(ParsedBy(ParseVertexName, "V|X,Y,Z"));
        path->add_option("--to", m_to, "vertex")
            ->required()
            ->check(ParsedBy(ParseVertexName, "V|X,Y,Z"));
        path->add_option("-o,--output", m_output, "polyline to write")->check(EndingWith(".obj"));
        path->add_option("--dot", m_graphFile, "graph to write, of a mesh of few vertices")
            ->check(EndingWith(".dot"));
        path->add_option("--picture", m_pictureFile,
                "picture to write, coloured by the distance from the start")
            ->check(EndingWith(".png"));
        m_picture.AddTo(*path);
        path->callback([this, &console, &code, &settings] {
            code = FindPath(console, m_input,
                { *ParseVertexName(m_from), *ParseVertexName(m_to), m_output, m_graphFile,
                    m_pictureFile, m_picture.Get(), settings.GetDigits() });
        });

        CLI::App* make = app.add_subcommand("make", "Makes a mesh");
        make->add_option("SHAPE", m_shape, "what to make")
            ->required()
            ->check(CLI::IsMember(m_shapes));
        make->add_option("N", m_resolution, "steps along a side")
            ->required()
            ->check(CLI::Range(kLowestResolution, kHighestResolution));
        make->add_option("-o,--output", m_output, "mesh to write")
            ->required()
            ->check(EndingWith(".off"));
        make->callback([this, &console, &code] {
            code = MakeMesh(console, m_shapes.at(m_shape), m_resolution, m_output);
        });
    }
    MeshCommands(const MeshCommands&) = delete;
    MeshCommands& operator=(const MeshCommands&) = delete;

private:
    const std::map<std::string, tamesh::EShape> m_shapes{ { "terrain", tamesh::eS_Terrain },
        { "torus", tamesh::eS_Torus }, { "sphere", tamesh::eS_Sphere } };
    const std::map<std::string, tamesh::EColoring> m_colorings{ { "height", tamesh::eC_Height },
        { "curvature", tamesh::eC_Curvature }, { "component", tamesh::eC_Component } };
    std::vector<std::string> m_inputs;
    std::string m_recordFolder;
    std::string m_input;
    std::string m_output;
    std::string m_shape;
    std::uint32_t m_resolution = 0;
    unsigned int m_bits = 0;
    bool m_isLossless = false;
    std::string m_from;
    std::string m_to;
    std::string m_graphFile;
    std::string m_pictureFile;
    std::string m_coloring;
    tamesh::PictureForm m_picture;
};

/// The subcommands that work on documents that may be damaged.
class DocumentCommands
{
public:
    DocumentCommands(CLI::App& app, tamesh::IConsole& console, tamesh::EExitCode& code)
    {
        using namespace tamesh;
        CLI::App* check = app.add_subcommand("check", "Looks for damage in documents");
        check->add_option("DOC", m_inputs, "document (.tadoc)")->required();
        check->callback([this, &console, &code] { code = CheckDocuments(console, m_inputs); });

        CLI::App* salvage
            = app.add_subcommand("salvage", "Saves what is intact of a damaged document");
        salvage->add_option("DOC", m_input, "document (.tadoc)")->required();
        salvage->add_option("-o,--output", m_output, "document to write")
            ->required()
            ->check(EndingWith(".tadoc"));
        salvage->callback(
            [this, &console, &code] { code = SalvageDocument(console, m_input, m_output); });
    }
    DocumentCommands(const DocumentCommands&) = delete;
    DocumentCommands& operator=(const DocumentCommands&) = delete;

private:
    std::vector<std::string> m_inputs;
    std::string m_input;
    std::string m_output;
};

/// `tamesh report`.
class ReportCommand
{
public:
    ReportCommand(CLI::App& app, tamesh::IConsole& console, tamesh::EExitCode& code)
    {
        CLI::App* report = app.add_subcommand("report", "Shows a document in a page for browsers");
        report->add_option("DOC", m_input, "document (.tadoc)")->required();
        report->add_option("-o,--output", m_output, "page to write")
            ->required()
            ->check(tamesh::EndingWith(".html"));
        report->callback(
            [this, &console, &code] { code = tamesh::ReportDocument(console, m_input, m_output); });
    }
    ReportCommand(const ReportCommand&) = delete;
    ReportCommand& operator=(const ReportCommand&) = delete;

private:
    std::string m_input;
    std::string m_output;
};

/// `tamesh run` and `tamesh shell`.
class SessionCommands
{
public:
    SessionCommands(CLI::App& app, tamesh::StandardConsole& console, tamesh::Settings& settings,
        tamesh::EExitCode& code)
    {
        CLI::App* run = app.add_subcommand("run", "Opens a mesh and carries out commands on it");
        run->add_option("FILE", m_options.file, "mesh or document")->required();
        run->add_option("--script", m_options.script, "commands, a line for each")->required();
        run->add_flag("--keep-going", m_options.isKeptGoing, "goes on behind one that fails");
        run->callback([this, &console, &settings, &code] {
            code = tamesh::RunScript(console, settings, m_options);
        });

        CLI::App* shell = app.add_subcommand("shell", "Carries out commands as they are typed");
        shell->add_option("FILE", m_options.file, "mesh or document");
        shell->callback([this, &console, &settings, &code] {
            code = tamesh::RunShell(
                console, console.GetInterruptToClear(), settings, m_options.file);
        });
    }
    SessionCommands(const SessionCommands&) = delete;
    SessionCommands& operator=(const SessionCommands&) = delete;

private:
    tamesh::SRunOptions m_options;
};

/// `tamesh options …`.
class OptionsCommands
{
public:
    OptionsCommands(CLI::App& app, tamesh::IConsole& console, tamesh::EExitCode& code)
    {
        using namespace tamesh;
        CLI::App* options = app.add_subcommand("options", "Shows and changes persistent options");
        options->require_subcommand(1);
        options->add_option("--category", m_category, "user, users, machine, classes or config")
            ->capture_default_str()
            ->check(CLI::IsMember({ "user", "users", "machine", "classes", "config" }));
        const auto addKey = [this](CLI::App* command) {
            command->fallthrough(); // the category may stand anywhere
            return command->add_option("KEY", m_key, "key, its parts separated by \\");
        };

        CLI::App* list = options->add_subcommand("list", "Shows the values of a key and below");
        addKey(list)->capture_default_str();
        list->callback([this, &console, &code] { code = ListOptions(console, getRoot(), m_key); });

        CLI::App* get = options->add_subcommand("get", "Shows one value");
        addKey(get)->required();
        get->add_option("NAME", m_name, "name of the value")->required();
        get->callback(
            [this, &console, &code] { code = GetOption(console, getRoot(), m_key, m_name); });

        CLI::App* set = options->add_subcommand("set", "Writes one value");
        addKey(set)->required();
        set->add_option("NAME", m_name, "name of the value")->required();
        set->add_option("VALUE", m_value, "a whole number of 32 bits, or a text")->required();
        set->add_flag("--text", m_isText, "a text, even where it looks like a number");
        set->callback([this, &console, &code] {
            code = SetOption(console, getRoot(), m_key,
                m_isText ? MakeTextOptionValue(m_name, m_value) : MakeOptionValue(m_name, m_value));
        });

        CLI::App* remove = options->add_subcommand("remove", "Removes a key and all below it");
        addKey(remove)->required();
        remove->callback(
            [this, &console, &code] { code = RemoveOptions(console, getRoot(), m_key); });

        CLI::App* save = options->add_subcommand("export", "Saves the values of a key and below");
        addKey(save)->capture_default_str();
        save->add_option("-o,--output", m_file, "file to write")->required();
        save->callback(
            [this, &console, &code] { code = ExportOptions(console, getRoot(), m_key, m_file); });

        CLI::App* load = options->add_subcommand("import", "Writes what was exported");
        load->add_option("FILE", m_file, "file to read")->required();
        load->callback([this, &console, &code] { code = ImportOptions(console, m_file); });
    }
    OptionsCommands(const OptionsCommands&) = delete;
    OptionsCommands& operator=(const OptionsCommands&) = delete;

private:
    platform::ERegistryRoot getRoot() const { return tamesh::GetOptionRoot(m_category); }

    std::string m_category = "user";
    std::string m_key = tamesh::kOptionsKey;
    std::string m_name;
    std::string m_value;
    bool m_isText = false;
    std::string m_file;
};

/// What a command line was wrong with, and how it should look.
tamesh::EExitCode complain(
    tamesh::IConsole& console, const CLI::App& app, const std::string& reason)
{
    console.WriteError("tamesh: " + reason + "\n\n" + app.help());
    return tamesh::eEC_WrongUsage;
}

int run(std::vector<std::string> arguments)
{
    using namespace tamesh;

    CLI::App app("Reads, checks, makes, draws and packs surface meshes.", "tamesh");
    app.set_version_flag("--version", "tamesh " TAMESH_VERSION);
    app.require_subcommand(1);
    StandardConsole console;
    const platform::InterruptWatch watch([&console] { console.Interrupt(); });
    EExitCode code = eEC_Done;

    Settings settings;
    settings.Recall();
    std::vector<std::string> assignments;
    app.add_option("--set", assignments, "a setting for this and later runs, NAME=VALUE")
        ->take_all()
        ->allow_extra_args(false)
        ->each([&](const std::string& assignment) {
            try {
                settings.Assign(assignment);
            } catch (const std::invalid_argument& failure) {
                throw CLI::ValidationError(failure.what());
            }
        })
        ->trigger_on_parse();
    app.parse_complete_callback([&] {
        console.SetProgressWanted(settings.IsProgressShown());
        console.SetNetworkTimeout(settings.GetNetworkTimeout());
        if (!settings.Remember()) {
            console.WriteError("tamesh: the settings cannot be kept for later runs\n");
        }
    });
    app.add_subcommand("help-settings", "Shows the settings")->callback([&] {
        code = write(console, settings.Describe());
    });
    MeshCommands meshCommands(app, console, settings, code);
    DocumentCommands documentCommands(app, console, code);
    ReportCommand reportCommand(app, console, code);
    SessionCommands sessionCommands(app, console, settings, code);
    OptionsCommands optionsCommands(app, console, code);

    try {
        std::ranges::reverse(arguments); // the parser takes them from the end
        app.parse(std::move(arguments));
        return code;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            return answer(console, app, error);
        }
        // A word that is no subcommand is left over, and the parser then only misses a subcommand.
        const std::vector<std::string> surplus = app.remaining();
        const std::string reason = app.get_subcommands().empty() && !surplus.empty()
            ? "there is no subcommand or option " + surplus.front()
            : std::string(error.what());
        return complain(console, app, reason);
    }
}

} // namespace

int main(int argc, char** argv)
{
    platform::SecureStandardStreams();
    platform::SurviveFailingWrites();
    try {
        return run(platform::GetArguments(argc, argv));
    } catch (const std::exception& failure) {
        tamesh::StandardConsole().WriteError("tamesh: " + std::string(failure.what()) + "\n");
        return tamesh::eEC_Failed;
    }
}
