#pragma once

#include "tabase/tamessagecommand.h"
#include "tamesh/commands.h"
#include "tamesh/pictureoptions.h"
#include "tamesh/vertexname.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tamesh {

/// The numbers of the commands, to which handlers subscribe.
enum ECommandId : unsigned int
{
    eCI_Open = 0x8001,
    eCI_Info,
    eCI_Components,
    eCI_Path,
    eCI_Distance,
    eCI_Colour,
    eCI_Picture,
    eCI_Pack,
    eCI_Save,
    eCI_Close,
    eCI_Tree,
    eCI_Locks,
    eCI_Queues,
    eCI_Settings,
    // Which the shell carries out itself.
    eCI_Wait,
    eCI_Help,
    eCI_Quit,
};

/// What the colours of a mesh in a session say.
enum EMeshColours
{
    eMC_Stored, // what `colour` has left there; else height
    eMC_Height,
    eMC_Curvature,
    eMC_Component,
    eMC_Distance, // what `distance` has left there
};

/// As the user names them.
const char* GetColoursName(EMeshColours colours);
const char* GetAxisName(EAxis axis);

/// A command in full. What it does not use is empty.
struct SCommand
{
    ECommandId id = eCI_Help;
    std::string text; // as the user wrote it
    bool isBackground = false;

    std::string mesh; // by its name in the session; empty for the only one
    std::string name; // of `open`: how the mesh is to be called
    std::string input; // a file
    std::string output; // a file
    VertexName from;
    VertexName to;
    EMeshColours colours = eMC_Stored;
    bool withPath = false; // of a picture
    SPictureOptions picture;
    SPackOptions packing;
    std::vector<std::string> assignments; // of settings
    std::string help; // what `help` says
};

/// What the user has set, as it is when the command begins.
struct SCommandSettings
{
    int digits = 0; // as SViewOptions
    int treeDepth = 40;
    bool isProgressShown = true;
    unsigned int networkTimeout = 30'000; // in milliseconds
};

/// A command of the user, on its way to the handler that carries it out.
class SessionCommand final : public TaMessageCommand
{
    TU_DECLARE_RTTI

public:
    SessionCommand(unsigned int job, SCommand command, SCommandSettings settings)
        : TaMessageCommand(command.id)
        , m_job(job)
        , m_command(std::move(command))
        , m_settings(settings)
    {
    }

    /// By which its reports name it.
    unsigned int GetJob() const { return m_job; }
    const SCommand& GetCommand() const { return m_command; }
    const SCommandSettings& GetSettings() const { return m_settings; }

    using TaMessageCommand::Dump;
    void Dump(TuStreamWriteASCII& stream) const override;

private:
    unsigned int m_job;
    SCommand m_command;
    SCommandSettings m_settings;
};

} // namespace tamesh
