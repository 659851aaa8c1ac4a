#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"
#include "tacompression/codedscript.h"
#include "tacompression/fullsink.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Model = TaProbabilityModelQuasiStatic;

constexpr const char16_t* kReaderFile = u"core/talibraries/tacompression/tadecompressrangecoder";

/// Version 0, the count, the bytes.
Bytes blockOf(std::initializer_list<unsigned char> coded)
{
    Bytes block(8 + coded.size());
    block[4] = static_cast<unsigned char>(coded.size());
    std::copy(coded.begin(), coded.end(), block.begin() + 8);
    return block;
}

/// The block that `action` codes with a model of so many symbols.
template <class Action> Bytes code(std::uint32_t symbolCount, Action&& action)
{
    return WriteToBytes([&](TuStreamWriteBinary& target) {
        TaCompressRangeCoder coder(target, symbolCount, 0);
        action(coder);
    });
}

/// Whether `action` finds in the block what it asks for, and takes no byte behind it.
template <class Action> bool decode(const Bytes& block, std::uint32_t symbolCount, Action&& action)
{
    return ReadFromBytes(block, [&](TuStreamReadBinary& source) {
        TaDecompressRangeCoder coder(source, symbolCount);
        action(coder);
    });
}

void expectSymbols(TaDecompressRangeCoder& coder, const std::vector<std::uint32_t>& expected)
{
    std::vector<std::uint32_t> symbols(expected.size());
    coder.ReadSymbols(symbols);
    EXPECT_EQ(symbols, expected);
}

void expectAllRefused(const std::vector<std::function<void()>>& actions)
{
    for (const auto& action : actions) {
        ExpectFailure<TuExceptionPreconditionViolation>(action);
    }
}

CodedScript& playNarrow(CodedScript& script)
{
    return script.RawBits(3024, 15).RawBits(14, 4).RawBits(8144, 13);
}

// The bytes of these blocks were worked out from the rules of docs/format.md, not by the coder.
TEST(TaRangeCoderTest, BlocksHaveTheBytesOfTheStoredForm)
{
    const struct
    {
        std::uint32_t symbolCount;
        std::function<void(CodedScript&)> play;
        Bytes bytes;
    } kBlocks[] = {
        { 2, [](auto&) {}, blockOf({ 0, 0, 0, 0 }) },
        { 2, [](auto& script) { script << 1; }, blockOf({ 0x7F, 0xFF, 0x80, 0 }) },
        // 0x100 * 0xFFFF lies below a change of the top byte, and the range of 0xFFFF across it:
        // two bytes go out at once.
        { 2, [](auto& script) { script.RawBits(0x100, 16); }, blockOf({ 0, 0xFF, 0xFF, 0, 0, 0 }) },
        // Here the top byte of both ends is 0 after the two bytes, and goes out with the next item:
        // also when that has no bits, and not before.
        { 2, [](auto& script) { playNarrow(script).RawBits(0, 0).RawBits(0xABCD, 16); },
            blockOf({ 0x17, 0xA1, 0xD3, 0xFF, 0, 0xBB, 0x96, 0x90, 0, 0 }) },
        { 2, [](auto& script) { playNarrow(script).RawBits(0xABCD, 16); },
            blockOf({ 0x17, 0xA1, 0xD3, 0xFF, 0xAB, 0xDC, 0xC9, 0x90, 0 }) },
        { 5,
            [](auto& script) {
                (script << 0u).RawBits(0xFFFFFF15, 5) << 4u;
                script.RawBits(123, 0) << 2u;
                script.RawBits(0xABCD, 16).RawBits(0x1ABCD, 17).RawBits(0xFFFFFFFF, 32) << 4u;
                script.RawBits(0x80000001, 32) << 4u << 0u;
            },
            blockOf({ 0x23, 0x0C, 0x77, 0x91, 0x5F, 0xB7, 0x1D, 0xFF, 0xE6, 0xFE, 0xE6, 0x68, 0x00,
                0x01, 0xA6, 0x66, 0x00, 0x00 }) },
    };
    for (const auto& block : kBlocks) {
        SCOPED_TRACE(&block - kBlocks);
        const auto play = [&](auto& coder) {
            CodedScript script(coder);
            block.play(script);
        };
        EXPECT_EQ(code(block.symbolCount, play), block.bytes);
        EXPECT_TRUE(decode(block.bytes, block.symbolCount, play));
    }
}

TEST(TaRangeCoderTest, NumbersOfEightTypesAreSymbolsAndAllElseIsBytes)
{
    const auto playSymbols = [](auto&& script) {
        script << 'a' << static_cast<unsigned char>(200) << static_cast<unsigned short>(3) << 4
               << 5u << 6l << 7ul << 8ll;
    };
    const auto playBytes = [](auto&& script) {
        script << static_cast<signed char>(-1) << 0x8123456789ABCDEFull << 0.1 << CString(u"b")
               << CStringA("c") << u"d";
    };
    const Bytes block = code(201, [&](auto& coder) {
        playSymbols(CodedScript(coder));
        playBytes(CodedScript(coder));
        coder << 9ll + (1ll << 32) << L"e"; // symbols have 32 bits
        ExpectFailure<TuExceptionPreconditionViolation>([&] { coder << '\x80'; }); // a negative one
    });
    EXPECT_EQ(block, code(201, [&](auto& coder) {
        coder.WriteSymbols(std::vector<std::uint32_t>{ 'a', 200, 3, 4, 5, 6, 7, 8 });
        const Bytes bytes = WriteToBytes(playBytes);
        coder.WriteRaw(bytes.data(), bytes.size());
        coder << 9 << u"e";
    }));
    decode(block, 201, [&](auto& coder) {
        playSymbols(CodedScript(coder));
        playBytes(CodedScript(coder));
    });
}

TEST(TaRangeCoderTest, AModelHasBoundsForItsArguments)
{
    const std::array<std::uint32_t, 3> kRefused[] = { { 1, 16, 1024 }, { 16385, 16, 1024 },
        { 3, 3, 1 }, { 0x40000001, 16, 1024 }, { 2, 0, 1 }, { 2, 17, 1024 }, { 2, 32, 1024 },
        { 2, 16, 0 }, { 2, 16, 1U << 17 }, { 2, 16, 0xFFFFFFFF } };
    for (const auto& [symbolCount, totalBits, targetRescale] : kRefused) {
        SCOPED_TRACE(testing::Message() << symbolCount << ' ' << totalBits << ' ' << targetRescale);
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&, n = symbolCount, t = totalBits, b = targetRescale] { Model(n, t, b); },
            u"core/talibraries/tacompression/taprobabilitymodelquasistatic", 55);
    }
    EXPECT_NO_THROW(Model(16384, 16, (1U << 17) - 1));
    EXPECT_NO_THROW(Model(2, 3, 15));
}

TEST(TaRangeCoderTest, ABlockThatIsCutOffOrNewerIsRefusedInLittleMemory)
{
    const auto open = [](const Bytes& block) { decode(block, 2, [](auto&) {}); };
    for (unsigned char count = 0; count < 4; ++count) {
        Bytes block{ 0, 0, 0, 0, count, 0, 0, 0 };
        block.resize(block.size() + count, 0xFF);
        ExpectFailure<TuExceptionStream>([&] { open(block); }, kReaderFile, 93);
    }
    ExpectFailure<TuExceptionWrongFileVersion>([&] {
        open({ 1, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0 });
    });
    const Bytes whole = code(2, [](auto& coder) { coder.WriteRaw("bytes", 5); });
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        ExpectFailure<TuExceptionStream>([&] { open(cut); });
    }
    Bytes hostile{ 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF };
    hostile.resize(100'000);
    const AllocationLimit memory(1000);
    ExpectFailure<TuExceptionStream>([&] { open(hostile); });
    EXPECT_LE(memory.GetLargest(), 3 * hostile.size());
}

TEST(TaRangeCoderTest, ReadingBeyondTheCodedBytesFailsForEver)
{
    const auto expectEnd = [](TaDecompressRangeCoder& coder, unsigned int line) {
        unsigned char byte = 0;
        std::vector<std::uint32_t> symbols(3);
        const std::function<void()> reads[]
            = { [&] { coder.ReadRawBits(0); }, [&] { coder >> byte; },
                  [&] { coder.ReadRaw(&byte, 1); }, [&] { coder.ReadSymbols(symbols); } };
        for (const auto& read : reads) {
            ExpectFailure<TuExceptionStream>(read, kReaderFile, line);
        }
    };
    decode(blockOf({ 0, 0, 0, 0 }), 2, [&](auto& coder) {
        CodedScript(coder).RawBits(0, 16);
        expectEnd(coder, 141);
    });
    decode(blockOf({ 0, 0xFF, 0xFF, 0, 0 }), 2, [&](auto& coder) {
        CodedScript(coder).RawBits(0x100, 16);
        expectEnd(coder, 160); // one byte is left, but two are due
    });
}

// No coder writes these bytes. What they give was worked out from the same rules.
TEST(TaRangeCoderTest, DamagedBytesGiveTheSameEverywhere)
{
    const Bytes block = blockOf({ 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF });
    const auto readBits = [&](std::uint32_t width) {
        std::vector<std::uint32_t> found(3);
        decode(block, 2, [&](auto& coder) {
            std::ranges::generate(found, [&] { return coder.ReadRawBits(width); });
        });
        return found;
    };
    using Numbers = std::vector<std::uint32_t>;
    EXPECT_EQ(readBits(3), (Numbers{ 8, 0, 0 }));
    EXPECT_EQ(readBits(16), (Numbers{ 0x10001, 0x1000001, 0xFFFF }));
    EXPECT_EQ(readBits(20), (Numbers{ 0x100000, 0xFFFFF, 0xFFFFF }));
    decode(block, 2, [](auto& coder) { expectSymbols(coder, { 1, 1, 1 }); });
    Bytes bytes(3, 1);
    decode(block, 2, [&](auto& coder) { coder.ReadRaw(bytes.data(), bytes.size()); });
    EXPECT_EQ(bytes, Bytes(3));
}

TEST(TaRangeCoderTest, WhatIsRefusedIsNotCoded)
{
    const auto model = Model::CreateUsual(1000);
    const std::vector<std::uint32_t> symbols{ 0, 2, 1, 3, 0 }; // the fourth is none
    const Bytes withRefusals = code(3, [&](TaCompressRangeCoder& coder) {
        for (const auto& refused :
            std::vector<std::function<void()>>{ [&] { coder << 3u; }, [&] { coder << -1ll; },
                [&] { coder.WriteSymbol(1000, *model); }, [&] { coder.WriteRawBits(0, 33); } }) {
            coder << 1u;
            ExpectFailure<TuExceptionPreconditionViolation>(refused);
        }
        // Of several, those before it are.
        ExpectFailure<TuExceptionPreconditionViolation>([&] { coder.WriteSymbols(symbols); });
        coder.WriteSymbol(999, *model);
    });
    model->Reset();
    EXPECT_EQ(withRefusals, code(3, [&](TaCompressRangeCoder& coder) {
        coder.WriteSymbols(std::vector<std::uint32_t>{ 1, 1, 1, 1, 0, 2, 1 });
        coder.WriteSymbol(999, *model);
    }));
    decode(withRefusals, 3, [](TaDecompressRangeCoder& coder) {
        ExpectFailure<TuExceptionPreconditionViolation>([&] { coder.ReadRawBits(33); });
        expectSymbols(coder, { 1, 1, 1, 1, 0, 2, 1 });
    });
    PlainStreamWrite target;
    ExpectFailure<TuExceptionPreconditionViolation>(
        [&] { TaCompressRangeCoder(target, TuSmartPointer<Model>(), 0); });
    EXPECT_TRUE(target.bytes.empty());
}

TEST(TaRangeCoderTest, TheBlockIsWrittenOnceAtTheEnd)
{
    PlainStreamWrite target;
    Bytes written;
    {
        TaCompressRangeCoder coder(target, 2, 100);
        EXPECT_TRUE(coder.IsCompressing());
        coder.WriteSymbols(std::vector<std::uint32_t>(100'000, 1));
        EXPECT_TRUE(target.bytes.empty());
        coder.Finish();
        written = target.bytes;
        EXPECT_FALSE(written.empty());
        expectAllRefused({ [&] { coder << 1u; }, [&] { coder.WriteRawBits(0, 0); },
            [&] { coder.WriteRaw("x", 1); },
            [&] { coder.WriteSymbols(std::vector<std::uint32_t>(1)); } });
    }
    EXPECT_EQ(target.bytes, written);
}

TEST(TaRangeCoderTest, AFailingTargetIsReportedByFinishOrLoggedByTheDestructor)
{
    const QuietLog log;
    for (const unsigned long long room : { 0u, 4u, 8u, 11u }) { // of 12 bytes
        FullSink target(room);
        {
            TaCompressRangeCoder coder(target, 2, 0);
            ExpectFailure<TuExceptionStream>([&] { coder.Finish(); });
            EXPECT_NO_THROW(coder.Finish());
            expectAllRefused({ [&] { coder << 1u; } });
        }
        EXPECT_EQ(target.GetFailureCount(), 1);
        EXPECT_EQ(log.TakeText(), "");
        EXPECT_NO_THROW(TaCompressRangeCoder(target, 2, 0));
        EXPECT_EQ(target.GetFailureCount(), 2);
        EXPECT_EQ(log.TakeText().find("a coded block is lost: "), 0u);
        std::optional<TaCompressRangeCoder> coder;
        coder.emplace(target, 2, 100);
        const AllocationLimit memory(0); // not even for a line of the log
        coder.reset();
    }
}

TEST(TaRangeCoderTest, CodersThatShareAModelAdaptItTogether)
{
    const auto model = TuMake<Model>(4u, 8u, 32u);
    std::uint32_t low = 0;
    std::uint32_t frequency = 0;
    model->GetFrequencies(3, low, frequency);
    PlainStreamWrite targets[2];
    {
        TaCompressRangeCoder first(targets[0], model, 0);
        TaCompressRangeCoder second(targets[1], model, 0); // the model starts anew
        for (unsigned int i = 0; i < 100; ++i) {
            (i % 3 == 0 ? first : second) << (i % 7 == 0 ? 2u : 1u);
        }
    }
    model->Reset();
    PlainStreamRead sources[]
        = { PlainStreamRead(targets[0].bytes), PlainStreamRead(targets[1].bytes) };
    TaDecompressRangeCoder first(sources[0], model);
    first.ReadSymbol(*model);
    TaDecompressRangeCoder second(sources[1], model); // which does not reset it
    for (unsigned int i = 1; i < 100; ++i) {
        ASSERT_EQ((i % 3 == 0 ? first : second).ReadSymbol(*model), i % 7 == 0 ? 2u : 1u);
    }
}

TEST(TaRangeCoderTest, ACopyOfAModelSharesItsFrequenciesAndUseInTurnsIsNoticed)
{
    std::uint32_t low = 0;
    std::uint32_t frequency = 0;
    auto original = TuMake<Model>(3u, 5u, 63u);
    Model copy(*original);
    original = TuMake<Model>(*original); // the first one is gone, and its arrays are not
    const auto useInTurns = [&] {
        for (unsigned int i = 0; i < 100'000; ++i) {
            std::uint32_t value = i * 7 % 40; // also beyond the total
            (i % 3 == 0 ? copy : *original).GetFrequencies(i % 2, low, frequency);
            ASSERT_LT((i % 5 == 0 ? copy : *original).GetSymbol(value, frequency), 3u);
        }
    };
    expectAllRefused({ useInTurns, useInTurns });
    copy.Reset();
    copy.GetFrequencies(1, low, frequency);
    EXPECT_EQ(low, 11u);
    EXPECT_EQ(frequency, 11u);
}

TEST(TaRangeCoderTest, BlocksFollowOneAnotherAndNest)
{
    const Bytes bytes = WriteToBytes([](TuStreamWriteBinary& target) {
        {
            TaStreamWritePredictiveCoder outer(target, 8, 0);
            EXPECT_TRUE(outer.IsCompressing());
            outer.WriteValue(7, 5);
            TaCompressRangeCoder(outer, 2, 0) << 1u << 0u;
            TaStreamWritePredictiveCoder(outer, 4, 0).WriteValue(3, 9);
            outer << u"text";
            outer.WriteValue(5, 7);
        }
        target << 42;
        TaCompressRangeCoder(target, 5, 0) << 3u;
    });
    PlainStreamRead source(bytes);
    TaStreamReadPredictiveCoder outer(source, 8);
    EXPECT_EQ(outer.ReadValue(5), 7u);
    TaDecompressRangeCoder inner(outer, 2);
    expectSymbols(inner, { 1, 0 });
    EXPECT_EQ(TaStreamReadPredictiveCoder(outer, 4).ReadValue(9), 3u);
    CString text;
    outer >> text;
    EXPECT_EQ(outer.ReadValue(7), 5u);
    int number = 0;
    source >> number;
    TaDecompressRangeCoder second(source, 5);
    expectSymbols(second, { 3 });
    EXPECT_EQ(text.ToUtf8() + std::to_string(number), "text42");
    EXPECT_TRUE(source.IsAtEnd());
}

} // namespace
