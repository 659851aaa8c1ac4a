#include "groundwork/tutask.h"

#include "groundwork/tuexceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Task : public TuTask
{
public:
    enum EThrow
    {
        eT_Nothing,
        eT_Failure,
        eT_Stranger,
    };

    std::string notes;
    EThrow throws = eT_Nothing;
    bool isLeftOut = false;
    bool succeeds = true;

protected:
    void onAdd() override { notes += "add "; }
    void onBeforeRun() override { notes += "before "; }
    void onAfterRun() override { notes += "after "; }
    void onCancel() override { notes += "cancel "; }
    void onException(const TuException* exception) override
    {
        notes += exception != nullptr ? "failure " : "stranger ";
    }
    bool doNotRun() const override { return isLeftOut; }
    TuCheckReturn<bool> run() override
    {
        notes += "run ";
        if (throws == eT_Failure) {
            throw TuExceptionStream(TU_HERE);
        }
        if (throws == eT_Stranger) {
            throw 1;
        }
        return succeeds;
    }
};

TEST(TuTaskTest, TellsItsHooksWhatBecomesOfIt)
{
    Task task;
    task.NotifyAdded();
    EXPECT_TRUE(task.Execute());
    task.Cancel();
    EXPECT_EQ(task.notes, "add before run after cancel ");

    Task copy(task);
    copy.notes.clear();
    copy.succeeds = false;
    EXPECT_FALSE(copy.Execute());
    copy.throws = Task::eT_Failure;
    EXPECT_FALSE(copy.Execute());
    copy.throws = Task::eT_Stranger;
    EXPECT_FALSE(copy.Execute());
    copy.isLeftOut = true;
    EXPECT_FALSE(copy.Execute());
    EXPECT_EQ(copy.notes, "before run after before run failure before run stranger cancel ");
    EXPECT_TRUE(copy.IsKindOf(TuTask::RTTI));
}

} // namespace
