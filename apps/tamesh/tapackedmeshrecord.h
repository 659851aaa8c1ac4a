#pragma once

#include "groundwork/iserializable.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/coordinateform.h"
#include "tamesh/mesh.h"

#include <cstdint>
#include <memory>

namespace tamesh {

class Progress;

/// The packed form of a mesh, as the object in the chunk of a document: faces and coordinates as
/// coded differences to what they are predicted from. docs/format.md states it byte by byte.
///
/// Failure: reading throws TuExceptionStream for a record that is cut off, and
///          TuExceptionWrongFileVersion for one of a later version; the record is then as it was.
///          What is damaged inside is noticed when it is unpacked.
class TaPackedMeshRecord final : public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaPackedMeshRecord(); // of no mesh at all
    /// `progress` comes to the count of vertices and faces.
    TaPackedMeshRecord(const Mesh& mesh, const CoordinateForm& form, Progress* progress);

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    /// Throws TuExceptionStream for what holds no sound mesh, and TuExceptionOutOfMemory. It takes
    /// no more than about 35,000 times the memory of the packed form. `progress` is only asked
    /// whether the user wants the program to stop.
    Mesh Unpack(const Progress* progress) const;

    /// What Serialize writes, in bytes.
    std::uint64_t GetStoredSize() const;

private:
    static IObject* CreateByFactory();

    std::unique_ptr<TaStreamWriteBinaryBuffer> m_packed; // never null
};

} // namespace tamesh
