#include "support/childprocess.h"
#include "support/environment.h"
#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    if (const auto code = PlayChildRole(argc, argv)) {
        return *code;
    }
    // Property tests start from the same seed, unless the user has told RapidCheck another.
    if (std::getenv("RC_PARAMS") == nullptr) {
        SetEnvironment("RC_PARAMS", "seed=" + std::to_string(GetTestSeed()));
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
