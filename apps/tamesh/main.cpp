#include "platform/platformarguments.h"
#include "platform/platforminterrupt.h"
#include "platform/platformterminal.h"
#include "tamesh/commands.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Accepts file names with this ending only: a mesh must not be overwritten with a document.
CLI::Validator endingWith(const std::string& ending)
{
    return CLI::Validator(
        [ending](std::string& name) {
            const bool ends = name.size() > ending.size()
                && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
            return ends ? std::string() : "the name does not end in " + ending + ": " + name;
        },
        "FILE" + ending);
}

/// What --help and --version ask for.
int answer(tamesh::IConsole& console, const CLI::App& app, const CLI::ParseError& question)
{
    std::ostringstream text;
    app.exit(question, text, text);
    if (console.WriteOutput(text.str())) {
        return tamesh::eEC_Done;
    }
    console.WriteError("standard output: cannot be written\n");
    return tamesh::eEC_Failed;
}

int run(std::vector<std::string> arguments)
{
    using namespace tamesh;

    CLI::App app("Reads, checks, makes and packs surface meshes.", "tamesh");
    app.set_version_flag("--version", "tamesh " TAMESH_VERSION);
    app.require_subcommand(1);
    StandardConsole console;
    const platform::InterruptWatch watch([&console] { console.Interrupt(); });
    EExitCode code = eEC_Done;

    std::vector<std::string> inputs;
    CLI::App* info = app.add_subcommand("info", "Shows the figures of OFF, OBJ and STL meshes");
    info->add_option("FILE", inputs, "mesh (.off, .obj, .stl)")->required();
    info->callback([&] { code = ShowMeshes(console, inputs); });

    CLI::App* show = app.add_subcommand("show", "Shows the figures of packed documents");
    show->add_option("DOC", inputs, "document (.tadoc)")->required();
    show->callback([&] { code = ShowDocuments(console, inputs); });

    std::string input;
    std::string output;
    CLI::App* pack = app.add_subcommand("pack", "Saves a mesh as a document");
    pack->add_option("FILE", input, "mesh (.off, .obj, .stl)")->required();
    pack->add_option("-o,--output", output, "document to write")
        ->required()
        ->check(endingWith(".tadoc"));
    pack->callback([&] { code = PackMesh(console, input, output); });

    const std::map<std::string, EShape> shapes{ { "terrain", eS_Terrain }, { "torus", eS_Torus },
        { "sphere", eS_Sphere } };
    std::string shape;
    std::uint32_t resolution = 0;
    CLI::App* make = app.add_subcommand("make", "Makes a mesh");
    make->add_option("SHAPE", shape, "what to make")->required()->check(CLI::IsMember(shapes));
    make->add_option("N", resolution, "steps along a side")
        ->required()
        ->check(CLI::Range(kLowestResolution, kHighestResolution));
    make->add_option("-o,--output", output, "mesh to write")->required()->check(endingWith(".off"));
    make->callback([&] { code = MakeMesh(console, shapes.at(shape), resolution, output); });

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
        console.WriteError("tamesh: " + reason + "\n\n" + app.help());
        return eEC_WrongUsage;
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
