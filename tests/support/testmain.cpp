#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <string>

int main(int argc, char** argv)
{
#if !defined(_WIN32)
    // Property tests start from the same seed, unless the user has told RapidCheck another.
    setenv("RC_PARAMS", ("seed=" + std::to_string(GetTestSeed())).c_str(), 0);
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
