#include "support/versionedrecord.h"

#include "groundwork/tuexceptions.h"
#include "support/bufferbytes.h"
#include "support/expectfailure.h"
#include "support/largestblock.h"
#include "tabase/tastreamreadbinarybuffer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// A class that can be made by name and is not serializable.
class Unserializable : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    static IObject* CreateByFactory() { return new Unserializable; }
};
TU_DEFINE_RTTI_ROOT(Unserializable, &Unserializable::CreateByFactory, nullptr);

VersionedRecord makeRecord()
{
    VersionedRecord record;
    record.title = u"n\u00e4me";
    record.weights = { 1.5f, -0.25f, 1e30f };
    record.visible = false;
    return record;
}

std::string chunkOf(const VersionedRecord& record)
{
    return BytesOf([&](auto& stream) { stream.WriteChunk(record); });
}

std::unique_ptr<ISerializable> readChunk(const std::string& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    return std::unique_ptr<ISerializable>(stream.ReadChunk());
}

TEST(VersionedRecordTest, OlderVersionsAreReadAndNewerOnesRefused)
{
    const VersionedRecord record = makeRecord();
    const auto readAs = [&record](unsigned int version) {
        const std::string bytes
            = BytesOf([&](auto& stream) { record.SerializeAs(stream, version); });
        TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
        VersionedRecord read;
        read.Serialize(stream);
        return read;
    };
    VersionedRecord expected;
    expected.title = record.title;
    EXPECT_TRUE(readAs(0) == expected);
    EXPECT_TRUE(readAs(VersionedRecord::kVersion) == record);
    // Versions count without a sign: the largest is newer, not -1.
    for (const unsigned int version : { VersionedRecord::kVersion + 1, ~0u }) {
        ExpectFailure<TuExceptionWrongFileVersion>([&] { readAs(version); });
    }
}

TEST(VersionedRecordTest, AChunkCutAnywhereFails)
{
    const std::string chunk = chunkOf(makeRecord());
    for (std::size_t size = 0; size < chunk.size(); ++size) {
        ExpectFailure<TuExceptionStream>([&] { readChunk(chunk.substr(0, size)); });
    }
}

TEST(VersionedRecordTest, AHugeNumberAnywhereTakesNoMemoryBeyondTheBytesPresent)
{
    const std::string chunk = chunkOf(makeRecord());
    constexpr std::size_t kStepOfReading = 65536;
    int failures = 0;
    for (const char* number : { "\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\x7F", "\xFF\xFF\xFF\x10" }) {
        for (std::size_t place = 0; place + 4 <= chunk.size(); ++place) {
            const std::string damaged = std::string(chunk).replace(place, 4, number);
            s_largestBlock = 0;
            try {
                readChunk(damaged);
            } catch (const TuException&) {
                ++failures;
            }
            EXPECT_LE(s_largestBlock, 2 * kStepOfReading) << "at byte " << place;
        }
    }
    EXPECT_GT(failures, 0);
}

TEST(VersionedRecordTest, AChunkThatCannotBeMadeIsRefused)
{
    for (const CString name : { u"NoSuchClass", u"", u"TuStreamRead", u"Unserializable" }) {
        const std::string chunk = BytesOf([&](auto& stream) { stream << 0u << name << 2u; });
        const std::string reason = ExpectFailure<TuException>([&] { readChunk(chunk); });
        EXPECT_NE(reason.find('"' + name.ToUtf8() + '"'), reason.npos) << reason;
    }

    // What the object itself throws while it is read passes on unchanged; the object is gone then.
    const std::string newer = BytesOf(
        [](auto& stream) { stream << 0u << u"VersionedRecord" << VersionedRecord::kVersion + 1; });
    ExpectFailure<TuExceptionWrongFileVersion>([&] { readChunk(newer); });
    const std::string newerChunk("\1\0\0", 4);
    ExpectFailure<TuExceptionWrongFileVersion>([&] { readChunk(newerChunk); });
}

} // namespace
