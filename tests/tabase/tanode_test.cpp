#include "tabase/tanode.h"

#include "support/datatreeprobe.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>

namespace {

/// As a user derives it.
class CountNode : public TaDataNodeInt32
{
public:
    explicit CountNode(std::int32_t count)
        : TaDataNodeInt32(u"Count", TuMake<TuInt32>(count), true, true)
    {
    }
};

TEST(TaNodeTest, DumpsItsSubtreeAsAnIndentedTree)
{
    const auto top = TuMake<TaNode>(u"Top", true, true);
    const auto first = TuMake<TaNode>(u"First", true, true);
    TaDataTreeProbe::AddChild(top, first);
    TaDataTreeProbe::AddChild(first, TuMake<CountNode>(-7));
    TaDataTreeProbe::AddChild(first, TuMake<TaNode>(u"Inner", true, true));
    const auto second = TuMake<TaNode>(u"Second", true, true);
    TaDataTreeProbe::AddChild(top, second);
    TaDataTreeProbe::AddChild(
        second, TuMake<TaDataNodeString>(u"Text", TuMake<TuString>(u"two\nlines"), true, true));
    second->SetModified(true, false);
    EXPECT_EQ(top->ToString().ToUtf8(),
        "Top (TaNode)\n"
        " |-- First (TaNode)\n"
        " |   |-- Count (TaDataNodeInt32) = -7\n"
        " |   |-- Inner (TaNode)\n"
        " |-- Second (TaNode), modified\n"
        "     |-- Text (TaDataNodeString) = two\\x0Alines\n");
}

} // namespace
