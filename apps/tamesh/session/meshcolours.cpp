#include "tamesh/session/meshcolours.h"

#include "tamesh/meshdrawing.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshpath.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/meshtarget.h"

namespace tamesh {

namespace {

    SColoring colorByStoredDistance(const MeshTarget& target)
    {
        const auto data = FindValue<TaDistanceData>(*target.GetNode(), SPartNames::kDistance);
        if (data.IsNull() || data->GetDistances().size() != target.GetMesh().GetVertexCount()) {
            throw MeshFailure(
                TU_HERE, target.GetName(), 0, "has no distances; 'distance --from V' finds them");
        }
        return ColorByDistance(
            target.GetName(), data->GetFrom(), data->GetDistances(), data->GetUnit());
    }

} // namespace

SColoring MakeColours(IConsole& console, const MeshTarget& target, const SCommand& command)
{
    const auto colorBy = [&](EColoring kind) {
        return ColorMesh(console, target.GetName(), target.GetMesh(), kind, command.picture.up);
    };
    switch (command.colours) {
    case eMC_Height:
        return colorBy(eC_Height);
    case eMC_Curvature:
        return colorBy(eC_Curvature);
    case eMC_Component:
        return colorBy(eC_Component);
    case eMC_Distance:
        return colorByStoredDistance(target);
    case eMC_Stored:
        break;
    }
    const auto stored = FindValue<TaColoringData>(*target.GetNode(), SPartNames::kColours);
    return !stored.IsNull() && stored->Fits(target.GetMesh().GetVertexCount())
        ? stored->GetColoring()
        : colorBy(eC_Height);
}

} // namespace tamesh
