#include "tamesh/meshtree.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"
#include "tabase/tauniqueid.h"

#include <filesystem>

namespace tamesh {

namespace {

    constexpr const char16_t* kMesh = u"Mesh";
    constexpr unsigned int kPatienceMs = 60'000;

    /// A write lock on a node, for as long as the children are added.
    class Writing
    {
    public:
        Writing(TaDataManager& tree, const TuSmartPointer<TaNode>& node)
            : m_tree(tree)
            , m_handle(tree, node)
        {
            if (node.IsNull() || !tree.TryLockAndWait(kPatienceMs)) {
                throw TuException(TU_HERE);
            }
        }

        TuSmartPointer<TaNode> Add(
            const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
        {
            if (!parent->FindChild(node->GetName()).IsNull() || !m_tree.InsertNode(node, parent)) {
                throw TuException(TU_HERE);
            }
            return node;
        }
        template <class DataNode, class Boxed, class Value>
        void Add(const CString& name, const Value& value, const TuSmartPointer<TaNode>& parent)
        {
            Add(TuMake<DataNode>(name, TuMake<Boxed>(value), true, true), parent);
        }

    private:
        TaDataManager& m_tree;
        TaDataHandleLockOnly<1> m_handle;
    };

    void addPoint(Writing& writing, const CString& name, const SPoint& point,
        const TuSmartPointer<TaNode>& parent)
    {
        const auto node = writing.Add(TuMake<TaNode>(name, true, true), parent);
        writing.Add<TaDataNodeFloat64, TuFloat64>(u"X", point.x, node);
        writing.Add<TaDataNodeFloat64, TuFloat64>(u"Y", point.y, node);
        writing.Add<TaDataNodeFloat64, TuFloat64>(u"Z", point.z, node);
    }

    /// Without folder and ending.
    CString baseName(const CString& file)
    {
        return std::filesystem::path(file.begin(), file.end()).stem().u16string();
    }

} // namespace

void DescribeMesh(TaDataManager& tree, const Mesh& mesh)
{
    const TuSmartPointer<TaNode> root = tree.GetRootNode();
    Writing writing(tree, root);
    const auto node = writing.Add(TuMake<TaNode>(kMesh, true, true), root);
    writing.Add<TaDataNodeUInt32, TuUInt32>(u"Vertices", mesh.GetVertexCount(), node);
    writing.Add<TaDataNodeUInt32, TuUInt32>(u"Faces", mesh.GetFaceCount(), node);
    writing.Add<TaDataNodeUInt32, TuUInt32>(u"Corners", mesh.GetCornerCount(), node);
    if (mesh.GetVertexCount() == 0) {
        return;
    }
    const auto [lower, upper] = FindBounds(mesh);
    const auto bounds = writing.Add(TuMake<TaNode>(u"Bounds", true, true), node);
    addPoint(writing, u"Lower", lower, bounds);
    addPoint(writing, u"Upper", upper, bounds);
}

void NameMesh(TaDataManager& tree, const std::string& sourceFile, const TaUniqueID& identifier)
{
    const TuSmartPointer<TaNode> node = tree.FindChild(kMesh);
    Writing writing(tree, node);
    const auto addText = [&](const CString& name, const CString& text) {
        writing.Add<TaDataNodeString, TuString>(name, text, node);
    };
    const CString source = CString::FromUtf8(sourceFile);
    addText(u"Name", baseName(source));
    addText(u"Source file", source);
    addText(u"Identifier", identifier);
}

} // namespace tamesh
