#include "tamesh/displaytext.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

TEST(DisplayTextTest, IsCutBetweenCharactersAndSteersNoTerminal)
{
    const std::string_view text = "a\xC3\xBC\xE2\x82\xAC";
    EXPECT_EQ(CutText(text, 3), "a\xC3\xBC");
    EXPECT_EQ(CutText(text, 5), "a\xC3\xBC");
    EXPECT_EQ(CutText(text, 99), text);
    EXPECT_EQ(CutText("\x80\x80\x80", 1), "");

    EXPECT_EQ(MakeDisplayText("\x1B[31m\xC2\x9B;1m \xC3\xBC\n\x7F"), "?[31m?;1m \xC3\xBC??");
    EXPECT_EQ(MakeDisplayText(std::string(5000, 'x')), std::string(300, 'x') + "...");
}

} // namespace
