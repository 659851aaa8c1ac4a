#pragma once

#include <cstdlib>
#include <random>

/// The seed of all random input of a test run: fixed, or the number in the environment variable
/// TABASE_TEST_SEED.
inline unsigned int GetTestSeed()
{
    const char* text = std::getenv("TABASE_TEST_SEED");
    return text != nullptr ? static_cast<unsigned int>(std::strtoul(text, nullptr, 10)) : 20261121;
}

/// A generator that starts the same in every test, for the same seed.
inline std::mt19937_64 MakeTestRandom() { return std::mt19937_64(GetTestSeed()); }
