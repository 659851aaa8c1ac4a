#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

/// Prints the seed of random input beside each failure, so that it can be repeated.
class SeedPrinter : public testing::EmptyTestEventListener
{
    void OnTestEnd(const testing::TestInfo& info) override
    {
        if (info.result()->Failed()) {
            std::cout << "Random input of this run: TABASE_TEST_SEED=" << GetTestSeed() << '\n';
        }
    }
};

/// Property tests start from the same seed, unless the user has told RapidCheck another.
void setPropertySeed()
{
#if !defined(_WIN32)
    const std::string parameters = "seed=" + std::to_string(GetTestSeed());
    setenv("RC_PARAMS", parameters.c_str(), 0);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    setPropertySeed();
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new SeedPrinter);
    return RUN_ALL_TESTS();
}
