#include "tamesh/tameshcomponents.h"

#include "tabase/taunionfind.h"

#include <algorithm>
#include <functional>

namespace tamesh {

TU_DEFINE_RTTI(TaMeshComponents, TaMpAlgorithm, &TaMeshComponents::CreateByFactory, nullptr);

IObject* TaMeshComponents::CreateByFactory() { return new TaMeshComponents; }

void TaMeshComponents::SetMesh(const Mesh& mesh)
{
    m_mesh = &mesh;
    setInputChanged();
}

const std::vector<std::uint32_t>& TaMeshComponents::GetSizes() const
{
    checkOutputData();
    return m_sizes;
}

void TaMeshComponents::compute()
{
    constexpr std::uint32_t kFacesPerPoll = 4096;
    TaUnionFind sets(m_mesh->GetVertexCount());
    const std::uint32_t faceCount = m_mesh->GetFaceCount();
    for (std::uint32_t i = 0; i != faceCount; ++i) {
        if (i % kFacesPerPoll == 0) {
            setProgress(static_cast<double>(i) / static_cast<double>(faceCount));
            if (isBreak()) {
                return;
            }
        }
        const std::span<const std::uint32_t> face = m_mesh->GetFace(i);
        for (const std::uint32_t corner : face) {
            sets.AddPair(face.front(), corner);
        }
    }
    m_sizes.assign(sets.CreateSetNumbers(), 0);
    for (std::uint32_t i = 0; i != m_mesh->GetVertexCount(); ++i) {
        ++m_sizes[sets.GetSetNumber(i)];
    }
    std::ranges::sort(m_sizes, std::greater());
}

} // namespace tamesh
