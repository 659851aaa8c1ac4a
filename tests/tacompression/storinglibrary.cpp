// What the dictionary codec loads in its tests: it stores, and misbehaves where it is asked to. A
// block is a letter, the reserved argument, the capacity (little-endian) and the data.

#include <cstdint>
#include <cstring>

extern "C" {
int ordinal_1(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int reserved);
int ordinal_2(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int reserved);
}

namespace {

constexpr std::uint32_t kHead = 6;

bool begins(const unsigned char* source, std::uint32_t sourceLength, const char* word)
{
    const std::size_t length = std::strlen(word);
    return sourceLength >= length && std::memcmp(source, word, length) == 0;
}

} // namespace

/// Data that begin with "fail" are not stored, and those with "more" than there is room for.
int ordinal_1(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int reserved)
{
    if (begins(*source, sourceLength, "fail")) {
        return 3;
    }
    unsigned char* const block = *buffer;
    block[0] = 'S';
    block[1] = static_cast<unsigned char>(reserved);
    for (unsigned int i = 0; i < 4; ++i) {
        block[2 + i] = static_cast<unsigned char>(*size >> (8 * i));
    }
    if (sourceLength != 0) {
        std::memcpy(block + kHead, *source, sourceLength);
    }
    *size = begins(*source, sourceLength, "more") ? *size + 1 : kHead + sourceLength;
    *buffer += *size; // as a coder may that counts with its arguments
    return 0;
}

/// The letter says how it goes: S well, H with a huge size, F fails at the data, M reports more
/// than there was room for, L less; N has no answer to the question for the size.
int ordinal_2(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int)
{
    if (sourceLength < kHead) {
        return 1;
    }
    const std::uint32_t length = sourceLength - kHead;
    const unsigned char letter = (*source)[0];
    if (*buffer == nullptr) {
        *size = letter == 'H' ? 0xFFFFFFFFu : length;
        return letter == 'N' ? 0 : -1;
    }
    std::memcpy(*buffer, *source + kHead, length);
    *size = letter == 'M' ? length + 1 : letter == 'L' ? length - 1 : length;
    return letter == 'F' ? 3 : 0;
}
