// The road of a change from a control thread to the audio side and into the slots of modules.
#include "ParamFixture.h"

#include <cmath>
#include <random>

namespace qel::test {

namespace {

class ParamTransportTest : public ParamFixture
{
protected:
    void set(CAudioParam& param, double value, double timeSec = 0.0, std::int32_t group = 0,
             std::int32_t entry = 0)
    {
        EXPECT_TRUE(param.setValue(group, entry, 0, value, context_, timeSec));
    }
};

TEST_F(ParamTransportTest, DatesEventsOnTheClockAndKeepsThemUntilTheirTime)
{
    CAudioParam& param = addParam("p", floatInfo("p", {0.0}));
    Slot slot(param);
    callAudio(2.0);
    slot.drain();
    set(param, 1.0, 0.25);
    set(param, 2.0, 0.5);
    callAudio();
    ASSERT_NE(slot.queue.peek(), nullptr);
    EXPECT_EQ(slot.queue.peek()->event->getTime(), 2.25);
    EXPECT_EQ(slot.drain(2.25), 0); // strictly below
    EXPECT_TRUE(slot.mark.isRaised());
    EXPECT_EQ(slot.drain(2.5), 1);
    EXPECT_EQ(slot.storage.get(0, 0), 1.0);
    EXPECT_EQ(slot.drain(2.6), 1);
    EXPECT_EQ(slot.storage.get(0, 0), 2.0);
    EXPECT_FALSE(slot.mark.isRaised());
    // A time that never comes must not hold up what follows.
    set(param, 3.0, std::nan(""));
    callAudio();
    EXPECT_EQ(slot.drain(3.0), 1);
    set(param, 4.0, -5.0);
    callAudio();
    EXPECT_EQ(slot.queue.peek()->event->getTime(), 2.0 + 0.01 + 0.01);
}

TEST_F(ParamTransportTest, AnUnboundSlotLeavesNothingBehind)
{
    CAudioParam& param = addParam("p", floatInfo("p", {0.0}));
    CAudioParamEventQueue shared;
    Slot kept(param);
    Slot gone(param);
    gone.binding.param->audioSide().unbind(gone.binding);
    gone.binding.queue = &shared;
    kept.binding.param->audioSide().unbind(kept.binding);
    kept.binding.queue = &shared;
    for (Slot* slot : {&kept, &gone}) {
        EXPECT_TRUE(param.audioSide().prepare(slot->binding));
        param.audioSide().bind(slot->binding);
    }
    set(param, 1.0);
    callAudio();
    param.audioSide().unbind(gone.binding);
    int events = 0;
    while (const CAudioParamEventNode* node = shared.peek()) {
        EXPECT_EQ(node->binding, &kept.binding);
        ++events;
        shared.pop();
    }
    EXPECT_GT(events, 0);
    set(param, 2.0);
    callAudio();
    EXPECT_EQ(shared.peek()->binding, &kept.binding);
    shared.clear();
    param.audioSide().unbind(kept.binding);
}

TEST_F(ParamTransportTest, WhatTheAudioThreadSetsReachesSlotsAtOnceAndControlThreadsWhenTheyAsk)
{
    CAudioParam& param = addParam("bpm", floatInfo("bpm", {140.0}));
    Slot slot(param);
    callAudio();
    slot.drain();
    EXPECT_TRUE(collector_->changeFromAudio(param, 97.0, 0.0));
    EXPECT_EQ(slot.drain(), 1);
    EXPECT_EQ(slot.storage.get(0, 0), 97.0);
    EXPECT_EQ(param.getValue(0, 0), 140.0);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(param.getValue(0, 0), 97.0);
    // A write of a control thread that arrives later is not undone, though it may wait in a batch.
    CAudioParamContext bulk;
    for (const bool isDropped : {false, true}) {
        bulk.batch = &collector_->newBatch();
        EXPECT_TRUE(param.setValue(0, 0, 0, 99.0, bulk));
        EXPECT_TRUE(collector_->changeFromAudio(param, 98.0, 0.0));
        collector_->takeChangesFromAudio();
        EXPECT_EQ(param.getValue(0, 0), 99.0);
        if (isDropped) {
            collector_->dropBatch(*bulk.batch);
        } else {
            collector_->submitBatch(*bulk.batch);
        }
        callAudio();
        collector_->takeChangesFromAudio();
        slot.drain();
        EXPECT_EQ(param.getValue(0, 0), isDropped ? 98.0 : 99.0);
        EXPECT_EQ(slot.storage.get(0, 0), param.getValue(0, 0));
        callAudio();
    }
    // The reserve comes back with each call; a call that exhausts it is told so.
    std::size_t taken = 0;
    while (collector_->changeFromAudio(param, 1.0, 0.0)) {
        ++taken;
    }
    EXPECT_EQ(taken, CAudioParamEventPool::kAudioEvents);
    slot.drain();
    callAudio();
    slot.drain();
    EXPECT_TRUE(collector_->changeFromAudio(param, 2.0, 0.0));
}

// Any sequence of writes of both sides, whatever batches and calls it falls into, leaves slot, audio side and
// control side with the same values.
TEST_F(ParamTransportTest, RandomWritesEndEqualOnBothSides)
{
    const std::uint32_t seed = 77;
    std::mt19937 random(seed);
    const auto below = [&random](std::int32_t n) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(n));
    };
    CAudioParam& number = addParam("n", floatInfo("n", {-1, -2, -3}));
    CAudioParam& text = addParam("t", stringInfo("t", {"a", "b"}));
    Slot numberSlot(number);
    Slot textSlot(text);
    Slot group2(number, 2);
    CAudioParamContext bulk;
    for (int step = 0; step < 20000; ++step) {
        CAudioParamContext& context = bulk.batch ? bulk : context_;
        const std::int32_t group = below(4);
        switch (below(15)) {
        case 0:
            number.clearToDefault(below(3) == 0 ? -1 : group, below(2) == 0 ? -1 : below(4), context);
            break;
        case 1:
            text.reset(below(3) == 0 ? -1 : group, below(2) == 0 ? -1 : below(4), context);
            break;
        case 2:
            if (!bulk.batch) {
                bulk.batch = &collector_->newBatch();
            } else {
                collector_->submitBatch(*std::exchange(bulk.batch, nullptr));
            }
            break;
        case 3:
            callAudio();
            break;
        case 4:
            env_->setInProcess(below(2) == 0);
            break;
        case 5:
        case 6:
            text.setString(group, below(4), CString::number(step), context);
            break;
        case 7: {
            const std::vector<double> values(static_cast<std::size_t>(below(4)), step);
            number.change({.group = group,
                           .start = below(3),
                           .count = static_cast<std::int32_t>(values.size()),
                           .resize = below(2) == 0,
                           .values = values.data()},
                          context);
            break;
        }
        case 8:
        case 9:
            collector_->changeFromAudio(number, step, 0.0); // may find no room
            break;
        case 10:
            collector_->takeChangesFromAudio();
            break;
        default:
            number.setValue(group, below(5), 0, step, context, below(3) * 0.001);
        }
        if (step % 500 != 499) {
            continue;
        }
        if (bulk.batch) {
            collector_->submitBatch(*std::exchange(bulk.batch, nullptr));
        }
        callAudio();
        collector_->takeChangesFromAudio();
        callAudio();
        for (Slot* slot : {&numberSlot, &textSlot, &group2}) {
            slot->drain();
        }
        for (std::int32_t g = 0; g < 5; ++g) {
            for (std::int32_t e = 0; e < 6; ++e) {
                ASSERT_EQ(numberSlot.storage.get(g, e), number.getValue(g, e)) << seed << ' ' << step;
                ASSERT_EQ(number.audioSide().getValues().get(g, e), number.getValue(g, e))
                    << seed << ' ' << step;
                ASSERT_EQ(textSlot.storage.getString(g, e), text.getString(g, e)) << seed << ' ' << step;
                ASSERT_EQ(text.audioSide().getValues().getString(g, e), text.getString(g, e))
                    << seed << ' ' << step;
            }
            ASSERT_EQ(group2.storage.get(2, g), number.getValue(2, g)) << seed << ' ' << step;
        }
    }
}

} // namespace

} // namespace qel::test
