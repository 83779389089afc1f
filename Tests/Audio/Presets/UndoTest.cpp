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

} // namespace
} // namespace qel::test
