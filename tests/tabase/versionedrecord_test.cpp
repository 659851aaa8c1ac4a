#include "support/versionedrecord.h"

#include "groundwork/tuexceptions.h"
#include "largestblock.h"
#include "support/expectfailure.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

/// A class that can be made by name and is not serializable.
class Unserializable : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    static IObject* CreateByFactory() { return new Unserializable; }
};
TU_DEFINE_RTTI_ROOT(Unserializable, &Unserializable::CreateByFactory, nullptr);

/// A class that can be stored and not made by name.
class Unmakeable final : public VersionedRecord
{
    TU_DECLARE_RTTI
};
TU_DEFINE_RTTI(Unmakeable, VersionedRecord, nullptr, nullptr);

VersionedRecord makeRecord()
{
    VersionedRecord record;
    record.title = u"n\u00e4me";
    record.weights = { 1.5f, -0.25f, 1e30f };
    record.visible = false;
    return record;
}

using Bytes = std::vector<unsigned char>;

template <class Action> Bytes write(Action&& action)
{
    TaStreamWriteBinaryBuffer stream;
    action(stream);
    return Bytes(stream.GetData(), stream.GetData() + stream.GetSize());
}

VersionedRecord read(const Bytes& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    VersionedRecord record;
    record.Serialize(stream);
    return record;
}

std::unique_ptr<ISerializable> readChunk(const Bytes& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    return std::unique_ptr<ISerializable>(stream.ReadChunk());
}

TEST(VersionedRecordTest, OlderVersionsAreReadAndNewerOnesRefused)
{
    const VersionedRecord record = makeRecord();
    VersionedRecord expected;
    expected.title = record.title;
    EXPECT_TRUE(read(write([&](auto& stream) { record.SerializeAs(stream, 0); })) == expected);
    expected.weights = record.weights;
    EXPECT_TRUE(read(write([&](auto& stream) { record.SerializeAs(stream, 1); })) == expected);
    EXPECT_TRUE(read(write([&](auto& stream) { record.Serialize(stream); })) == record);

    // Versions count without a sign: the largest is newer, not -1.
    for (const unsigned int version : { VersionedRecord::kVersion + 1, ~0u }) {
        const Bytes newer = write([&](auto& stream) { record.SerializeAs(stream, version); });
        ExpectFailure<TuExceptionWrongFileVersion>([&] { read(newer); });
    }
}

TEST(VersionedRecordTest, ARecordCutAnywhereFails)
{
    const Bytes record = write([](auto& stream) { makeRecord().Serialize(stream); });
    for (std::size_t size = 0; size < record.size(); ++size) {
        TaStreamReadBinaryBuffer cut(record.data(), size);
        VersionedRecord untouched = makeRecord();
        ExpectFailure<TuExceptionStream>([&] { untouched.Serialize(cut); });
        EXPECT_TRUE(untouched == makeRecord());
    }
    const Bytes chunk = write([](auto& stream) { stream.WriteChunk(makeRecord()); });
    for (std::size_t size = 0; size < chunk.size(); ++size) {
        TaStreamReadBinaryBuffer cut(chunk.data(), size);
        ExpectFailure<TuExceptionStream>([&] { delete cut.ReadChunk(); });
    }
}

TEST(VersionedRecordTest, AHugeNumberAnywhereTakesNoMemoryBeyondTheBytesPresent)
{
    const Bytes chunk = write([](auto& stream) { stream.WriteChunk(makeRecord()); });
    constexpr std::size_t kStepOfReading = 65536;
    int failures = 0;
    for (const unsigned int top : { 0xFFu, 0x7Fu, 0x10u }) {
        for (std::size_t place = 0; place + 4 <= chunk.size(); ++place) {
            Bytes damaged = chunk;
            std::fill_n(&damaged[place], 3, static_cast<unsigned char>(0xFF));
            damaged[place + 3] = static_cast<unsigned char>(top);
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

TEST(VersionedRecordTest, AChunkComesBackAsItsOwnClass)
{
    const VersionedRecord record = makeRecord();
    const Bytes bytes = write([&](auto& stream) {
        stream.WriteChunk(record);
        stream << 77;
    });
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    const std::unique_ptr<ISerializable> object(stream.ReadChunk());
    ASSERT_TRUE(object->Is(VersionedRecord::RTTI));
    EXPECT_TRUE(dynamic_cast<const VersionedRecord&>(*object) == record);
    int next = 0;
    stream >> next;
    EXPECT_EQ(next, 77);
}

TEST(VersionedRecordTest, AChunkThatCannotBeMadeIsRefused)
{
    for (const CString name : { u"NoSuchClass", u"", u"Unmakeable", u"Unserializable" }) {
        const Bytes chunk = write([&](auto& stream) { stream << 0u << name << 2u; });
        try {
            readChunk(chunk);
            ADD_FAILURE() << "nothing was thrown for " << name.ToUtf8();
        } catch (const TuException& failure) {
            EXPECT_TRUE(failure.Is(TuException::RTTI)) << failure.what();
            EXPECT_NE(
                std::string(failure.what()).find('"' + name.ToUtf8() + '"'), std::string::npos);
        }
    }

    // What the object itself throws while it is read passes on unchanged; the object is gone then.
    const Bytes newer = write(
        [](auto& stream) { stream << 0u << u"VersionedRecord" << VersionedRecord::kVersion + 1; });
    ExpectFailure<TuExceptionWrongFileVersion>([&] { readChunk(newer); });
    const Bytes newerChunk = write([](auto& stream) { stream << 1u; });
    ExpectFailure<TuExceptionWrongFileVersion>([&] { readChunk(newerChunk); });
}

} // namespace
