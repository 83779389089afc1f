// Control threads write as fast as they can while the audio thread takes what there is.
#include "CAudioParamFilterInvert.h"
#include "CAudioParamListener.h"
#include "ParamFixture.h"

#include <atomic>
#include <thread>

namespace qel::test {

namespace {

constexpr int kWrites = 4000;             // by each of two threads
constexpr std::int32_t kBatchGroups = 33; // as many values as a preset has, from group 1 on

class CCountingListener : public CAudioParamListener
{
public:
    ~CCountingListener() override { detach(); }

    void onParamChange(const CAudioParamNotice&) override { ++notices; }

    std::atomic<int> notices{0};
};

class ParamThreadsTest : public ParamFixture
{};

TEST_F(ParamThreadsTest, ValuesArriveInOrderAndTheLastOneStays)
{
    CAudioParam& a = addParam("a", floatInfo("a", {0.0}));
    CAudioParam& b = addParam("b", floatInfo("b", {0.0}));
    CAudioParam& both = addParam("both", floatInfo("both", {0.0, 0.0}));
    CAudioParam& text = addParam("text", stringInfo("text", {"0"}));
    Slot slotA(a);
    Slot slotB(b);
    Slot slotBoth(both);
    Slot slotText(text);
    CCountingListener listener;
    listener.attach(collector_);

    std::atomic<int> running{2};
    const auto write = [&](CAudioParam& own, std::int32_t entry) {
        CAudioParamContext context;
        for (int i = 1; i <= kWrites; ++i) {
            own.setValue(0, 0, 0, i, context);
            both.setValue(0, entry, 0, i, context);
            if (i % 16 == 0) {
                text.setString(0, 0, CString::number(i), context);
            }
            if (i % 64 == 0) {
                CAudioParamContext bulk;
                bulk.batch = &collector_->newBatch();
                for (std::int32_t group = 1; group < kBatchGroups; ++group) {
                    own.setValue(group, 0, 0, i, bulk);
                }
                collector_->submitBatch(*bulk.batch);
            }
        }
        --running;
    };
    std::thread first(write, std::ref(a), 0);
    std::thread second(write, std::ref(b), 1);

    double last[4] = {};
    bool isMonotone = true;
    bool isWhole = true;
    const auto drain = [&] {
        callAudio(0.001);
        for (Slot* slot : {&slotA, &slotB, &slotBoth, &slotText}) {
            slot->drain();
        }
        const double now[4] = {slotA.storage.get(0, 0), slotB.storage.get(0, 0), slotBoth.storage.get(0, 0),
                               slotBoth.storage.get(0, 1)};
        for (int i = 0; i < 4; ++i) {
            isMonotone = isMonotone && now[i] >= last[i];
            last[i] = now[i];
        }
        // Written in one batch, so never seen apart.
        for (std::int32_t group = 2; group < kBatchGroups; ++group) {
            isWhole = isWhole && slotA.storage.get(group, 0) == slotA.storage.get(1, 0) &&
                      slotB.storage.get(group, 0) == slotB.storage.get(1, 0);
        }
    };
    while (running.load() > 0) {
        drain();
    }
    first.join();
    second.join();
    drain();
    drain();

    EXPECT_TRUE(isMonotone);
    EXPECT_TRUE(isWhole);
    for (const double value : last) {
        EXPECT_EQ(value, kWrites);
    }
    EXPECT_EQ(a.audioSide().getValues().get(0, 0), kWrites);
    EXPECT_EQ(slotText.storage.getString(0, 0), text.getString(0, 0));
    EXPECT_EQ(listener.notices.load(),
              2 * (2 * kWrites + kWrites / 16 + (kBatchGroups - 1) * (kWrites / 64)));
}

TEST_F(ParamThreadsTest, AFilteredParameterNeverEndsOnTheStateOfAnEarlierWriter)
{
    CAudioParam& on = addParam("plugin.on", floatInfo("on", {1.0}, 0.0, 1.0));
    CAudioParam& off = addParam("plugin.off", floatInfo("off", {0.0}, 0.0, 1.0));
    CAudioParamFilterInvert filter;
    ASSERT_OK(filter.init(*collector_, "plugin", {"on"}, {"off"}));
    Slot slotOn(on);
    Slot slotOff(off);
    for (int round = 0; round < 200; ++round) {
        const auto write = [&on](int offset) {
            CAudioParamContext context;
            for (int i = 0; i < 20; ++i) {
                on.setValue(0, 0, 0, (i + offset) & 1, context);
            }
        };
        std::thread first(write, 0);
        std::thread second(write, 1);
        callAudio(0.001);
        first.join();
        second.join();
        callAudio(0.001);
        slotOn.drain();
        slotOff.drain();
        ASSERT_EQ(off.getValue(0, 0), 1.0 - on.getValue(0, 0)) << round;
        ASSERT_EQ(slotOff.storage.get(0, 0), 1.0 - slotOn.storage.get(0, 0)) << round;
    }
}

} // namespace

} // namespace qel::test
