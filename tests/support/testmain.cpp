#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <iostream>

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

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new SeedPrinter);
    return RUN_ALL_TESTS();
}
