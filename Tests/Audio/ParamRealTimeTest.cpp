// What the audio thread does about parameters costs it no memory and no lock.
#include "AllocationGuard.h"
#include "CAudioParamFilterInvert.h"
#include "ParamInstance.h"

#include <memory>
#include <thread>
#include <vector>

namespace qel::test {

namespace {

class ParamRealTimeTest : public ParamInstanceTest
{
protected:
    // A processing call with the modules' part, under the guard. Slots that wait leave their events queued,
    // as a module behind a long latency does.
    AllocationCounts guardedCall(std::vector<std::unique_ptr<Slot>>& slots, bool wait = false)
    {
        AllocationGuard guard;
        callAudio();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            if (slots[i]->isDirty && (!wait || i % 8 == 0)) {
                slots[i]->drain();
            }
        }
        return guard.stop();
    }
};

TEST_F(ParamRealTimeTest, NothingIsAllocatedFreedOrLockedOnceTheFormatsAreKnown)
{
    if (!AllocationGuard::kCounts) {
        GTEST_SKIP() << "nothing is counted in this build";
    }
    std::vector<CAudioParam*> params;
    for (int i = 0; i < 20; ++i) {
        params.push_back(
            &addParam(("n" + std::to_string(i)).c_str(), floatInfo("n", std::vector<double>(8))));
    }
    CAudioParam& text = addParam("text", stringInfo("text", {"1", "2", "3", "4", "5", "6", "7", "8"}));
    params.push_back(&text);
    std::vector<std::unique_ptr<Slot>> slots;
    for (CAudioParam* param : params) {
        for (int i = 0; i < 8; ++i) {
            slots.push_back(std::make_unique<Slot>(*param));
        }
    }
    guardedCall(slots);
    guardedCall(slots);

    for (int block = 0; block < 300; ++block) {
        // Far more than a host does between two blocks: single writes, strings, lists, a whole preset.
        for (int write = 0; write < 50; ++write) {
            CAudioParam& param = *params[static_cast<std::size_t>(write) % 20];
            env_->setInProcess(write % 2 == 0);
            EXPECT_TRUE(param.setValue(write % 8, write % 5, 0, block + write, context_));
            EXPECT_TRUE(text.setString(write % 8, (write + block) % 8,
                                       "a text that is longer than the room inside a string object has",
                                       context_));
        }
        if (block % 10 == 0) {
            CAudioParamContext bulk;
            bulk.batch = &collector_->newBatch();
            for (CAudioParam* param : params) {
                param->clearToDefault(-1, -1, bulk);
            }
            collector_->submitBatch(*bulk.batch);
        }
        const AllocationCounts counts = guardedCall(slots, block % 8 != 7);
        ASSERT_EQ(counts.allocations, 0u) << block;
        ASSERT_EQ(counts.frees, 0u) << block;
        ASSERT_EQ(counts.locks + counts.tryLocks, 0u) << block;
    }
    guardedCall(slots);
    EXPECT_EQ(slots.back()->storage.getString(3, 3), text.getString(3, 3));
}

TEST_F(ParamRealTimeTest, AChangeOfTheAudioThreadsOwnIsAsCheap)
{
    if (!AllocationGuard::kCounts) {
        GTEST_SKIP() << "nothing is counted in this build";
    }
    CAudioParam& param = addParam("bpm", floatInfo("bpm", {140.0}));
    std::vector<std::unique_ptr<Slot>> slots;
    slots.push_back(std::make_unique<Slot>(param));
    guardedCall(slots);
    guardedCall(slots);
    for (int block = 0; block < 100; ++block) {
        AllocationGuard guard;
        const bool done = collector_->changeFromAudio(param, 60.0 + block, 0.0);
        const AllocationCounts counts = guard.stop();
        ASSERT_TRUE(done);
        ASSERT_EQ(counts.total(), 0u);
        ASSERT_EQ(guardedCall(slots).total(), 0u);
        ASSERT_EQ(slots[0]->storage.get(0, 0), 60.0 + block);
    }
}

// A host that automates a switch from the audio thread need not wait for a control thread to see its
// opposite.
TEST_F(ParamRealTimeTest, AFilterFollowsTheAudioThreadAtOnce)
{
    CAudioParam& enable = addParam("p.enable", floatInfo("enable", {0.0}));
    CAudioParam& mute = addParam("p.mute", floatInfo("mute", {1.0}));
    CAudioParamFilterInvert filter;
    ASSERT_OK(filter.init(*collector_, "p", {"enable"}, {"mute"}));
    std::vector<std::unique_ptr<Slot>> slots;
    slots.push_back(std::make_unique<Slot>(mute));
    guardedCall(slots);
    ASSERT_TRUE(collector_->changeFromAudio(enable, 1.0, 0.0));
    guardedCall(slots);
    EXPECT_EQ(slots[0]->storage.get(0, 0), 0.0);
    EXPECT_EQ(mute.getValue(0, 0), 1.0);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(mute.getValue(0, 0), 0.0);
    // While a control thread is at the list, nothing happens, and the next call does it.
    enable.forEachFilter([&](CAudioParamFilter&) {
        std::thread audio([&] { EXPECT_FALSE(collector_->changeFromAudio(enable, 0.0, 0.0)); });
        audio.join();
    });
    ASSERT_TRUE(collector_->changeFromAudio(enable, 0.0, 0.0));
    guardedCall(slots);
    EXPECT_EQ(slots[0]->storage.get(0, 0), 1.0);
}

} // namespace

} // namespace qel::test
