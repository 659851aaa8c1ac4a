#include "support/memorystreams.h"
#include "tamesh/codednumbers.h"
#include "tamesh/session/commandwords.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace tamesh;

RC_GTEST_PROP(CommandWordsProperties, QuotedWordsAreTheSameWords, ())
{
    const auto words = *rc::gen::nonEmpty(
        rc::gen::container<std::vector<std::string>>(rc::gen::container<std::string>(rc::gen::oneOf(
            rc::gen::elementOf(std::string(" \t\r\n;&#\"\\-a")), rc::gen::arbitrary<char>()))));
    std::string line;
    for (const std::string& word : words) {
        line += QuoteWord(word) + ' ';
    }
    const std::vector<SCommandWords> commands = SplitCommandLine(line + "& # ; \"");
    RC_ASSERT(commands.size() == 1u);
    RC_ASSERT(commands[0].words == words);
    RC_ASSERT(commands[0].isBackground);
}

template <class Value, class Read> void expectSame(const std::vector<Value>& values, Read&& read)
{
    const std::vector<unsigned char> bytes
        = WriteToBytes([&](auto& stream) { WriteCoded(stream, std::span<const Value>(values)); });
    const bool isWhole = ReadFromBytes(bytes, [&](auto& stream) {
        const std::vector<Value> back = read(stream);
        RC_ASSERT(back.size() == values.size());
        for (std::size_t i = 0; i != values.size(); ++i) {
            RC_ASSERT(
                std::bit_cast<std::uint32_t>(back[i]) == std::bit_cast<std::uint32_t>(values[i]));
        }
    });
    RC_ASSERT(isWhole);
}

RC_GTEST_PROP(CodedNumbersProperties, AllNumbersComeBackBitForBit, ())
{
    auto numbers = *rc::gen::container<std::vector<std::uint32_t>>(
        rc::gen::oneOf(rc::gen::arbitrary<std::uint32_t>(),
            rc::gen::element(
                0u, ~0u, 0x80000000u, 0x7FC00001u, 0xFF800001u, 0x7F800000u, 1u, 0x80000001u)));
    if (*rc::gen::inRange(0, 50) == 0) {
        numbers.resize(65535u + *rc::gen::inRange(0u, 3u), 5u); // about a block
    }
    expectSame(numbers, ReadCodedNumbers);
    std::vector<float> floats;
    for (const std::uint32_t number : numbers) {
        floats.push_back(std::bit_cast<float>(number));
    }
    expectSame(floats, ReadCodedFloats);
}

} // namespace
