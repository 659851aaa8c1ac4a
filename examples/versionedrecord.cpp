// A class that is stored as a versioned record: into a file, and read back by the name of the
// class; from a record of its first version, which knew less; and from one of a version to come.

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tuscopedpointer.h"
#include "groundwork/tusmartpointer.h"
#include "platform/platformfile.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <iostream>

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

    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;
    TU_DECLARE_EXTENSIONS;

private:
    static IObject* CreateByFactory() { return new Wheel; }

    int m_spokes = 0;
    double m_rim = 0.0; // in millimetres
};

TU_DEFINE_RTTI_ROOT(Wheel, &Wheel::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(Wheel, ISerializable)

void Wheel::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(1); // 1: the rim was added
    stream << m_spokes << m_rim;
}

void Wheel::Serialize(TuStreamReadBinary& stream)
{
    const unsigned int version = stream.ReadAndCompareVersion(1);
    int spokes = 0;
    double rim = 0.0; // what records of version 0 do not say
    stream >> spokes;
    if (version >= 1) {
        stream >> rim;
    }
    m_spokes = spokes; // only now: a failed read leaves the object as it was
    m_rim = rim;
}

void store(const Wheel& wheel, const CString& path)
{
    TaStreamWriteBinaryFile file(path, TaStreamWriteBinaryFile::eWM_Safe);
    file.WriteChunk(wheel);
    file.Commit(); // the old file, or the new one, never a half
}

/// The reader knows no wheels: the class is found by the name in the chunk.
TuScopedPointer<ISerializable> load(const CString& path)
{
    TaStreamReadBinaryFile file(path);
    return TuScopedPointer<ISerializable>(file.ReadChunk());
}

/// The beginning of a record as a program of another version writes it.
TaStreamReadBinaryBuffer readRecord(TaStreamWriteBinaryBuffer& record, unsigned int version)
{
    record.Clear();
    record.WriteVersion(version);
    record << 36;
    return TaStreamReadBinaryBuffer(record);
}

} // namespace

int main()
{
    const CString path = u"versionedrecord.bin";
    store(*TuMake<Wheel>(16, 622.0), path);
    const TuScopedPointer<ISerializable> object = load(path);
    const bool isRemoved = platform::RemovePath(path.GetView());
    std::cout << "a chunk of the class " << CString(object->GetClassName()).ToUtf8() << '\n';

    const auto* const back = dynamic_cast<const Wheel*>(object.Get());
    const bool isBack = back != nullptr && back->GetSpokes() == 16 && back->GetRim() == 622.0;

    TaStreamWriteBinaryBuffer record;
    Wheel old(1, 1.0);
    auto fromOlder = readRecord(record, 0);
    old.Serialize(fromOlder);
    const bool isOld = old.GetSpokes() == 36 && old.GetRim() == 0.0;

    bool isRefused = false;
    try {
        auto fromNewer = readRecord(record, 2);
        old.Serialize(fromNewer);
    } catch (const TuExceptionWrongFileVersion& failure) {
        std::cout << "refused: " << failure.what() << '\n';
        isRefused = old.GetSpokes() == 36;
    }
    return isRemoved && isBack && isOld && isRefused ? 0 : 1;
}
