// The undo history of a program.
#include "PresetInstance.h"

namespace qel::test {
namespace {

using Texts = std::vector<std::string>;

class Undo : public PresetInstanceTest
{
protected:
    Undo() { makeInstance(); }

    static Bytes saved(const CAudioParam& param)
    {
        return bytesOf([&](COutputStream& stream) { return param.save(stream, -1); });
    }
};

TEST_F(Undo, AnInstanceWithoutStepsListsTheStartAlone)
{
    EXPECT_EQ(steps(), Texts{"Undo history start"});
    EXPECT_EQ(position(), 0);
    undo_->moveTo(0);
    undo_->moveTo(1);
    undo_->moveTo(-1);
    EXPECT_EQ(position(), 0);
}

TEST_F(Undo, DragsOfOneKnobMergeUntilAnotherComesBetween)
{
    edit(*gain_, 3.0, 0, true);
    edit(*gain_, 4.0, 0, true);
    edit(*drive_, 5.0, 0, true);
    edit(*gain_, 6.0, 0, true);
    EXPECT_EQ(steps().size(), 4u);
    edit(*gain_, 7.0, 1, true); // another group
    edit(*gain_, 8.0, 1, false);
    EXPECT_EQ(steps().size(), 6u);

    undo_->moveTo(1);
    EXPECT_EQ(gain_->getValue(0, 0), 4.0);
    undo_->moveTo(0);
    EXPECT_EQ(gain_->getValue(0, 0), 1.0);
    undo_->moveTo(5);
    EXPECT_EQ(gain_->getValue(0, 0), 6.0);
    EXPECT_EQ(gain_->getValue(1, 0), 8.0);
    EXPECT_EQ(drive_->getValue(0, 0), 5.0);
}

TEST_F(Undo, KeepsAsManyStepsAsAllowed)
{
    for (int i = 1; i <= 33; ++i) {
        edit(*gain_, 1.0 + i);
    }
    EXPECT_EQ(steps().size(), 33u); // 32 and the start
    EXPECT_EQ(position(), 32);
    undo_->moveTo(0);
    EXPECT_EQ(gain_->getValue(0, 0), 2.0); // before the oldest step that is left
}

TEST_F(Undo, DropsAStepThatChangedNothing)
{
    edit(*gain_, 1.0);
    undo_->addStep(CAudioParamUndoStep("empty"));
    ASSERT_OK(activate(*master_, CAudioPreset("7qtz:Default")));
    EXPECT_EQ(steps(), Texts{"Undo history start"});
}

TEST_F(Undo, TakesGroupsAndEntriesAwayThatAWriteBrought)
{
    const Bytes before = saved(*routing_);
    const Bytes gainBefore = saved(*gain_);
    CAudioParamUndoStep step("grow");
    CAudioParamContext context;
    context.recorder = &step;
    const double values[] = {7.0, 8.0};
    routing_->change({.start = 2, .count = 2, .values = values}, context);                 // one entry longer
    routing_->change({.start = 1, .count = 1, .resize = true, .values = values}, context); // shorter
    gain_->setValue(3, 0, 0, 9.0, context);                                                // a new group
    gain_->setValue(3, 0, 0, 10.0, context);
    undo_->addStep(std::move(step));
    const Bytes after = saved(*routing_);
    const Bytes gainAfter = saved(*gain_);

    undo_->moveTo(0);
    EXPECT_EQ(saved(*routing_), before);
    EXPECT_EQ(saved(*gain_), gainBefore);
    undo_->moveTo(1);
    EXPECT_EQ(saved(*routing_), after);
    EXPECT_EQ(saved(*gain_), gainAfter);
}

TEST_F(Undo, RestoresTextsThatAreGoneFromTheParameter)
{
    CAudioParamUndoStep step("names");
    CAudioParamContext context;
    context.recorder = &step;
    dcName_->setString(0, 0, "first", context);
    dcName_->setString(0, 0, "second", context);
    dcName_->clearToDefault(-1, -1, context);
    dcName_->setString(2, 0, "third", context);
    undo_->addStep(std::move(step));
    undo_->moveTo(0);
    EXPECT_EQ(dcName_->getString(0, 0), "3 Hz -6");
    EXPECT_EQ(dcName_->getCurrent().getGroupCount(), 1);
    undo_->moveTo(1);
    EXPECT_EQ(dcName_->getString(0, 0), "3 Hz -6");
    EXPECT_EQ(dcName_->getString(2, 0), "third");
}

TEST_F(Undo, AWalkReachesTheAudioSideAsOneBatch)
{
    Slot gain(*gain_, 0);
    Slot drive(*drive_, 0);
    edit(*gain_, 3.0);
    edit(*drive_, 5.0);
    edit(*gain_, 4.0);
    callAudio();
    gain.drain();
    drive.drain();
    EXPECT_EQ(gain.storage.get(0, 0), 4.0);
    undo_->moveTo(0);
    callAudio();
    gain.drain();
    drive.drain();
    EXPECT_EQ(gain.storage.get(0, 0), 1.0);
    EXPECT_EQ(drive.storage.get(0, 0), 2.0);
}

} // namespace
} // namespace qel::test
