// One parameter on the control side: defaults, listeners, recorders, filters.
#include "CAudioParamFilterInvert.h"
#include "CAudioParamListener.h"
#include "ParamFixture.h"

namespace qel::test {

namespace {

class CLogListener : public CAudioParamListener
{
public:
    ~CLogListener() override { detach(); }

    void onParamChange(const CAudioParamNotice& notice) override
    {
        log.push_back(notice.param->getName().toUtf8() + ":" + std::to_string(notice.change.group) + "=" +
                      std::to_string(static_cast<int>(notice.param->getValue(0, 0))));
        if (onNotice) {
            onNotice(notice);
        }
    }

    std::vector<std::string> log;
    std::function<void(const CAudioParamNotice&)> onNotice;
};

class CLogRecorder : public CAudioParamRecorder
{
public:
    void onBeforeChange(CAudioParam&, const CAudioParamStorage& current, const CAudioParamChange&) override
    {
        log.push_back(current.get(0, 0));
    }
    void onAfterChange(CAudioParam&, const CAudioParamStorage& current, const CAudioParamChange&) override
    {
        log.push_back(current.get(0, 0));
    }

    std::vector<double> log;
};

using ParamTest = ParamFixture;

TEST_F(ParamTest, GoesBackToDefaultsByParameterGroupAndEntry)
{
    CAudioParamInfo info = floatInfo("p", {1, 2});
    info.defaults.push_back({3});
    CAudioParam& param = addParam("p", info);
    const auto dirty = [&] {
        for (std::int32_t group = 0; group < 3; ++group) {
            for (std::int32_t entry = 0; entry < 2; ++entry) {
                param.setValue(group, entry, 0, 9.0, context_);
            }
        }
    };
    dirty();
    param.clearToDefault(1, 0, context_);
    EXPECT_EQ(param.getValue(1, 0), 1.0); // the fill, not the group's own first value
    EXPECT_EQ(param.getValue(1, 1), 9.0);
    param.clearToDefault(1, -1, context_);
    EXPECT_EQ(param.getCurrent().getCount(1), 0);
    param.clearToDefault(0, -1, context_);
    EXPECT_EQ(param.getValue(0, 1), 2.0);
    EXPECT_EQ(param.getValue(2, 1), 9.0);
    param.reset(1, -1, context_);
    EXPECT_EQ(param.getValue(1, 0), 3.0);
    dirty();
    param.clearToDefault(-1, -1, context_);
    EXPECT_EQ(param.getCurrent().getGroupCount(), 1);
    dirty();
    param.reset(-1, -1, context_);
    EXPECT_EQ(param.getCurrent().getGroupCount(), 2);
    EXPECT_EQ(param.getValue(1, 0), 3.0);
    // One entry of a shorter list returns to its initial value, too, with the defaults in front of it.
    info.defaults[1] = {3, 4, 5};
    CAudioParam& other = addParam("other", info);
    other.setValue(1, 0, 0, 9.0, context_);
    other.clearToDefault(1, -1, context_);
    other.reset(1, 2, context_);
    EXPECT_EQ(other.getCurrent().getCount(1), 3);
    EXPECT_EQ(other.getValue(1, 2), 5.0);
    EXPECT_EQ(other.getValue(1, 1), 2.0);
    // What is not there is not made only to be emptied.
    param.clearToDefault(6, -1, context_);
    EXPECT_EQ(param.getCurrent().getGroupCount(), 2);
}

TEST_F(ParamTest, TellsListenersOutsideTheLockOnceItIsLeft)
{
    CAudioParam& a = addParam("a", floatInfo("a", {0.0}));
    CAudioParam& b = addParam("b", floatInfo("b", {0.0}));
    CLogListener listener;
    listener.attach(collector_);
    listener.onNotice = [&](const CAudioParamNotice& notice) {
        EXPECT_TRUE(notice.param->getLock().tryLock());
        notice.param->getLock().unlock();
    };
    a.setValue(0, 0, 0, 1.0, context_);
    EXPECT_EQ(listener.log, (std::vector<std::string>{"a:0=1"}));
    {
        // Kept back while a caller has locks of its own.
        const CAudioParamContext::Scope scope(context_);
        a.setValue(0, 0, 0, 2.0, context_);
        b.setValue(0, 0, 0, 3.0, context_);
        EXPECT_EQ(listener.log.size(), 1u);
    }
    EXPECT_EQ(listener.log, (std::vector<std::string>{"a:0=1", "a:0=2", "b:0=3"}));
    // A listener may write in its turn, and need not hear of its own writes.
    listener.log.clear();
    listener.onNotice = [&](const CAudioParamNotice& notice) {
        if (notice.param == &a) {
            CAudioParamContext own;
            b.setValue(0, 0, 0, 7.0, own);
        }
    };
    a.setValue(0, 0, 0, 4.0, context_);
    EXPECT_EQ(listener.log, (std::vector<std::string>{"a:0=4", "b:0=7"}));
    context_.sender = &listener;
    a.setValue(0, 0, 0, 5.0, context_);
    EXPECT_EQ(listener.log.size(), 2u);
}

TEST_F(ParamTest, AnInvertFilterKeepsTheOppositeInEveryGroup)
{
    addParam("plugin.mod.enable", floatInfo("enable", {1.0}, 0.0, 1.0));
    addParam("plugin.mod.mute", floatInfo("mute", {0.0}, 0.0, 1.0));
    collector_->addRemap("plugin.mod.alias", "plugin.mod.mute");
    CAudioParam& enable = collector_->getParam("plugin.mod.enable");
    CAudioParam& mute = collector_->getParam("plugin.mod.mute");
    CAudioParamFilterInvert filter;
    ASSERT_OK(filter.init(*collector_, "plugin.mod", {"enable"}, {"alias"}));
    CLogRecorder recorder;
    context_.recorder = &recorder;
    enable.setValue(0, 0, 0, 0.0, context_);
    EXPECT_EQ(mute.getValue(0, 0), 1.0);
    EXPECT_EQ(recorder.log.size(), 2u); // the source alone is a step to undo
    enable.setValue(3, 0, 0, 0.0, context_);
    EXPECT_EQ(mute.getValue(3, 0), 1.0);
    EXPECT_EQ(mute.getValue(1, 0), 0.0);
    enable.clearToDefault(-1, -1, context_);
    EXPECT_EQ(mute.getValue(0, 0), 0.0);
    EXPECT_EQ(mute.getValue(3, 0), 0.0);

    CAudioParamFilterInvert back;
    EXPECT_FAILS(back.init(*collector_, "plugin.mod", {"mute"}, {"enable"}), "written from itself");
    filter.release();
    enable.setValue(0, 0, 0, 0.0, context_);
    EXPECT_EQ(mute.getValue(0, 0), 0.0);
}

} // namespace

} // namespace qel::test
