#include "groundwork/tuboxed.h"
#include "groundwork/tuexception.h"
#include "platform/platformlibrary.h"
#include "platform/platformtext.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace {

template <int N> IObject* createNumber() { return new TuInt32(N); }

int valueOf(TuRTTI::CreateFunction create)
{
    const std::unique_ptr<IObject> object(create());
    return dynamic_cast<const TuInt32&>(*object).GetValue();
}

TEST(TuRTTITest, IsKindOfFollowsBothBaseSlots)
{
    const TuRTTI root(u"Root", nullptr, nullptr);
    const TuRTTI other(u"Other", nullptr, nullptr);
    const TuRTTI left(u"Left", root, nullptr, nullptr);
    const TuRTTI right(u"Right", other, root, nullptr, nullptr);
    const TuRTTI mixed(u"Mixed", left, right, nullptr, nullptr);
    for (const TuRTTI* base : { &mixed, &left, &root, &right, &other }) {
        EXPECT_TRUE(mixed.IsKindOf(*base)) << platform::ToUtf8(base->GetClassName());
    }
    EXPECT_FALSE(left.IsKindOf(other));
    EXPECT_FALSE(root.IsKindOf(left));
    const TuRTTI twin(u"Mixed", nullptr, nullptr); // of the same name, but another class
    EXPECT_FALSE(mixed.IsKindOf(twin));
}

TEST(TuRTTITest, TheFirstRecordOfANameIsFoundUntilItLeavesAndDebugBuildsReportTheSecondOnce)
{
    static std::vector<const TuRTTI*> s_reported;
    s_reported.clear();
    const TuRTTI::DuplicateHook former
        = TuRTTI::SetDuplicateHook([](const TuRTTI& found, const TuRTTI& hidden) {
              s_reported.insert(s_reported.end(), { &found, &hidden });
          });
    std::optional<TuRTTI> first(std::in_place, u"Contested", &createNumber<1>, nullptr);
    std::optional<TuRTTI> second(std::in_place, u"Contested", &createNumber<2>, nullptr);
    EXPECT_EQ(valueOf(TuRTTI::getCreate(u"Contested")), 1);
    EXPECT_EQ(valueOf(TuRTTI::getCreate(u"Contested")), 1);
#if defined(NDEBUG)
    EXPECT_TRUE(s_reported.empty());
#else
    EXPECT_EQ(s_reported, (std::vector<const TuRTTI*>{ &*first, &*second }));
#endif
    TuRTTI::SetDuplicateHook(former);

    second.reset();
    EXPECT_EQ(valueOf(TuRTTI::getCreate(u"Contested")), 1);
    std::optional<TuRTTI> third(std::in_place, u"Contested", &createNumber<3>, nullptr);
    first.reset();
    EXPECT_EQ(valueOf(TuRTTI::getCreate(u"Contested")), 3);
    third.reset();
    EXPECT_EQ(TuRTTI::getCreate(u"Contested"), nullptr);
    EXPECT_NE(TuRTTI::getCreate(L"TuString"), nullptr); // wide text is text everywhere
}

TEST(TuRTTITest, ALibraryBringsItsClassesAndTakesThemAwayAHundredTimes)
{
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(TuRTTI::getCreate(u"PluginShape"), nullptr);
        platform::SharedLibrary plugin;
        ASSERT_TRUE(plugin.Load(platform::FromUtf8(TA_TEST_PLUGIN)));
        const TuRTTI::CreateFunction create = TuRTTI::getCreate(u"PluginShape");
        ASSERT_NE(create, nullptr);
        // Its base record lies in this program's library, its own in the loaded one.
        const std::unique_ptr<const IObject> object(create());
        EXPECT_TRUE(object->IsKindOf(TuException::RTTI));
        EXPECT_NE(dynamic_cast<const TuException*>(object.get()), nullptr);
        // The plugin has a record of a name that this library registered first.
        EXPECT_EQ(TuRTTI::getCreate(u"TuInt32"), TuInt32::RTTI.GetCreate());
    }
    EXPECT_EQ(TuRTTI::getCreate(u"TuInt32"), TuInt32::RTTI.GetCreate());
}

// A chain asked for while its middle record is still missing: the statics of one source are made in
// the order in which they stand.
extern const TuRTTI s_middle;
extern const TuRTTI s_first;
const TuRTTI s_last(u"LastOfChain", s_middle, nullptr, nullptr);
const bool s_askedEarly = s_last.IsKindOf(s_first);
const TuRTTI s_middle(u"MiddleOfChain", s_first, nullptr, nullptr);
const TuRTTI s_first(u"FirstOfChain", nullptr, nullptr);

TEST(TuRTTITest, AQuestionAskedTooEarlyIsNotRemembered)
{
    EXPECT_FALSE(s_askedEarly);
    EXPECT_TRUE(s_last.IsKindOf(s_first));
}

} // namespace
