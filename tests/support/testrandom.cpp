#include "support/testrandom.h"

#include <cstdlib>

unsigned int GetTestSeed()
{
    constexpr unsigned int kSeed = 20261121;
    const char* text = std::getenv("TABASE_TEST_SEED");
    return text != nullptr ? static_cast<unsigned int>(std::strtoul(text, nullptr, 10)) : kSeed;
}

std::mt19937_64 MakeTestRandom() { return std::mt19937_64(GetTestSeed()); }
