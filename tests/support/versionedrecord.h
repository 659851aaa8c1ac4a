#pragma once

#include "groundwork/iserializable.h"

#include <vector>

/// A record that has grown twice: version 0 had a name, version 1 added weights, version 2 a flag.
/// It can be made by name, and writes any of its versions.
class VersionedRecord : public ISerializable
{
    TU_DECLARE_RTTI

public:
    static constexpr unsigned int kVersion = 2;

    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;
    void SerializeAs(TuStreamWriteBinary& stream, unsigned int version) const;

    TU_DECLARE_EXTENSIONS;

    friend bool operator==(const VersionedRecord& a, const VersionedRecord& b)
    {
        return a.title == b.title && a.weights == b.weights && a.visible == b.visible;
    }

    CString title;
    std::vector<float> weights;
    bool visible = true;

private:
    static IObject* CreateByFactory() { return new VersionedRecord; }
};
