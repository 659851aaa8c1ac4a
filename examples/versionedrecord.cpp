// A class with a type record that is shared, stored as a versioned record, and read back by name.

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tuscopedpointer.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tuweakpointer.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <cstdio>

namespace {

class Wheel : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    Wheel() = default;
    Wheel(int spokes, double rim)
        : m_spokes(spokes)
        , m_rim(rim)
    {
    }

    int GetSpokes() const { return m_spokes; }
    double GetRim() const { return m_rim; }

    void Serialize(TuStreamWriteBinary& stream) const override
    {
        stream.WriteVersion(1);
        stream << m_spokes << m_rim;
    }
    void Serialize(TuStreamReadBinary& stream) override
    {
        const unsigned int version = stream.ReadAndCompareVersion(1);
        int spokes = 0;
        double rim = 0.0; // what records of version 0 do not say
        stream >> spokes;
        if (version >= 1) {
            stream >> rim;
        }
        m_spokes = spokes;
        m_rim = rim;
    }
    TU_DECLARE_EXTENSIONS;

private:
    static IObject* CreateByFactory() { return new Wheel; }

    int m_spokes = 0;
    double m_rim = 0.0; // in millimetres
};

TU_DEFINE_RTTI_ROOT(Wheel, &Wheel::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(Wheel, ISerializable)

} // namespace

int main()
{
    TuSmartPointer<Wheel> wheel = TuMake<Wheel>(16, 622.0);
    const TuWeakPointer<Wheel> observer(wheel.Get());

    TaStreamWriteBinaryBuffer written;
    written.WriteChunk(*wheel);
    wheel.Reset(); // the last reference: the observer's link is cleared
    std::printf("%zu bytes written, the wheel is %s\n", written.GetSize(),
        observer.Lock().IsNull() ? "gone" : "still there");

    // The reader knows no wheels: the class is found by the name in the chunk.
    TaStreamReadBinaryBuffer reader(written.GetData(), written.GetSize());
    const TuScopedPointer<ISerializable> object(reader.ReadChunk());
    const auto& back = dynamic_cast<const Wheel&>(*object);
    std::printf("%s: %d spokes, %.0f mm\n", CString(object->GetClassName()).ToUtf8().c_str(),
        back.GetSpokes(), back.GetRim());
    return back.GetSpokes() == 16 && object->IsKindOf(Wheel::RTTI) ? 0 : 1;
}
