#pragma once

#include <random>

/// The seed of all random input of a test run: fixed, or the number in the environment variable
/// TABASE_TEST_SEED. A failing test prints it.
unsigned int GetTestSeed();

/// A generator that starts the same in every test, for the same seed.
std::mt19937_64 MakeTestRandom();
