#include "tabase/tacolortables.h"

TuSmartPointer<TaColorTable> TaColorTables::CreateViridis(
    unsigned long count, float minimum, float maximum)
{
    return TuMake<TaColorTable>(count, minimum, maximum);
}

TuSmartPointer<TaColorTable> TaColorTables::CreateCividis(
    unsigned long count, float minimum, float maximum)
{
    return TuMake<TaColorTable>(count, minimum, maximum);
}

TuSmartPointer<TaColorTable> TaColorTables::CreateCoolWarm(
    unsigned long count, float minimum, float maximum)
{
    return TuMake<TaColorTable>(count, minimum, maximum);
}
