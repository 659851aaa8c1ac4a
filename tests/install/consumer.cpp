#include <groundwork/tuboxed.h>
#include <tabase/tastreamwritebinarybuffer.h>

#include <cstdio>
#include <memory>

int main()
{
    const std::unique_ptr<IObject> object(TuRTTI::getCreate(u"TuString")());
    TaStreamWriteBinaryBuffer stream;
    stream.WriteChunk(dynamic_cast<const ISerializable&>(*object));
    std::printf("%zu bytes\n", stream.GetSize());
    return stream.GetSize() == 32 ? 0 : 1; // two versions, "TuString" with its count, a count of 0
}
