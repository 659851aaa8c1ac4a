#pragma once

#include <cstdint>
#include <span>
#include <vector>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

// Rows of numbers, stored as what each differs from the one before: their count, and a block of
// predicted numbers for every 65,536 of them. docs/format.md states them byte by byte.

void WriteCoded(TuStreamWriteBinary& stream, std::span<const std::uint32_t> numbers);
/// Bit for bit.
void WriteCoded(TuStreamWriteBinary& stream, std::span<const float> numbers);

/// The count is a claim: memory grows as blocks arrive. Throws TuExceptionStream for damaged ones.
std::vector<std::uint32_t> ReadCodedNumbers(TuStreamReadBinary& stream);
std::vector<float> ReadCodedFloats(TuStreamReadBinary& stream);

} // namespace tamesh
