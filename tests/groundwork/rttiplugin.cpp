#include "groundwork/tuexception.h"
#include "groundwork/tuperformancecounter.h"

// A library that tests load: its classes come and go with it.

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

/// Which object of a singleton this library sees.
extern "C" const void* GetCounterOfPlugin();

const void* GetCounterOfPlugin() { return &TuPerformanceCounter::GetInstance(); }
