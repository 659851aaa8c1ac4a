#include "tamesh/session/importhandler.h"

#include "tabase/tauniqueid.h"
#include "tamesh/document.h"
#include "tamesh/guard.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshreader.h"
#include "tamesh/meshtree.h"

#include <filesystem>

namespace tamesh {

namespace {

    /// The name of a mesh until its node is in the tree.
    class Reservation
    {
    public:
        Reservation(SessionTree& tree, const SCommand& command)
            : m_tree(tree)
            , m_name(tree.Reserve(command.name.empty() ? getStem(command.input) : command.name))
        {
        }
        ~Reservation()
        {
            if (!m_isKept) {
                m_tree.Release(m_name);
            }
        }
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

        const std::string& GetName() const { return m_name; }
        void Keep()
        {
            m_tree.Announce(m_name);
            m_isKept = true;
        }

    private:
        static std::string getStem(const std::string& file)
        {
            const CString path = CString::FromUtf8(file);
            return CString(std::filesystem::path(path.GetView()).stem().u16string()).ToUtf8();
        }

        SessionTree& m_tree;
        const std::string m_name;
        bool m_isKept = false;
    };

    Document read(IConsole& console, const std::string& file)
    {
        if (file.ends_with(".tadoc")) {
            Document document;
            ReadDocumentFile(console, file, document);
            return document;
        }
        Document document(ReadMeshFile(console, file));
        NameMesh(document.GetTree(), file, TaUniqueID());
        return document;
    }

} // namespace

ImportHandler::ImportHandler(const SSessionParts& session)
    : CommandHandler(u"Import", session, { eCI_Open })
{
}

void ImportHandler::carryOut(const SJob& job)
{
    const std::string& file = job.command.input;
    Reservation name(getTree(), job.command);
    Document document = read(job.console, file);
    const std::uint32_t vertices = document.GetMesh().GetVertexCount();
    const std::uint32_t faces = document.GetMesh().GetFaceCount();
    const auto parts = document.TakeParts();

    // A node with all its parts comes into the tree in one step: nobody sees half of it.
    TaDataManager& manager = getManager();
    const auto node = TuMake<TaNode>(CString::FromUtf8(name.GetName()), true, true);
    TreeLocks locks(manager, job.console);
    locks.Write(manager.GetRootNode());
    locks.Acquire(name.GetName());
    const auto insert
        = [&](const TuSmartPointer<TaNode>& child, const TuSmartPointer<TaNode>& parent) {
              if (!manager.InsertNode(child, parent)) {
                  throw TuException(TU_HERE);
              }
          };
    insert(node, manager.GetRootNode());
    try {
        for (const auto& part : parts) {
            insert(part, node);
        }
        node->SetModified(false, true);
    } catch (...) {
        TaDataHandleLockOnly<1> handle(manager, node);
        manager.RemoveNode(handle).MarkRead();
        throw;
    }
    name.Keep();
    locks.Release();
    WriteResult(job.console,
        name.GetName() + ": " + std::to_string(vertices) + " vertices, " + std::to_string(faces)
            + " faces, of " + file + "\n");
}

} // namespace tamesh
