#include "groundwork/tuexception.h"

// A library that the registry's test loads and unloads.

namespace {

class PluginShape : public TuException
{
    TU_DECLARE_RTTI

public:
    PluginShape()
        : TuException(TU_HERE)
    {
    }

private:
    static IObject* CreateByFactory() { return new PluginShape; }
};

TU_DEFINE_RTTI(PluginShape, TuException, &PluginShape::CreateByFactory, nullptr);

const TuRTTI s_rivalOfTuInt32(u"TuInt32", nullptr, nullptr);

} // namespace
