// The small classes that trees are joined with: timer, attribute doubler, global settings.
#include "CAttrDoubler.h"
#include "CGlobalSettings.h"
#include "CTimer.h"
#include "EventRig.h"

namespace qel {
namespace {

using test::CEventProbe;
using test::EventRig;

constexpr CCreatorRow kClasses[] = {
    {"probe", newObject<CEventProbe>, CEventProbe::buildClassInfo},
    {"core:timer", newObject<CTimer>, CTimer::buildClassInfo},
    {"core:attr-doubler", newObject<CAttrDoubler>, CAttrDoubler::buildClassInfo},
    {"core:global-settings", newObject<CGlobalSettings>, CGlobalSettings::buildClassInfo},
    {nullptr, nullptr, nullptr}};

class TreeClasses : public ::testing::Test
{
protected:
    TreeClasses()
    {
        CObject::setSharedObject(&*shared_);
        loop_.setClock([this] { return nowSec_; });
        tree_.server->setEventLoop(&loop_);
        CEventProbe::log.clear();
    }
    ~TreeClasses() override
    {
        CEventProbe::onEvent = nullptr;
        tree_.end();
        CObject::setSharedObject(nullptr);
    }

    static CAttrMap attributes(std::initializer_list<std::pair<const char*, const char*>> list)
    {
        CAttrMap map;
        for (const auto& [key, value] : list) {
            map[key] = CAttrValue(value);
        }
        return map;
    }
    std::size_t ticksAt(double sec)
    {
        nowSec_ = sec;
        loop_.drain();
        return std::exchange(CEventProbe::log, {}).size();
    }

    double nowSec_ = 0.0;
    test::TestClasses classes_{kClasses};
    test::TreeRoot shared_;
    CEventLoop loop_;
    EventRig tree_;
};

TEST_F(TreeClasses, ATimerTicksAtItsIntervalRoundedToMilliseconds)
{
    CObject& probe = tree_.add("probe", "probe");
    probe.listenObject("timer", "tick", "one");
    tree_.add("core:timer", "timer", attributes({{"interval", "0.0205"}}));
    EXPECT_EQ(ticksAt(0.0206), 0u);
    EXPECT_EQ(ticksAt(0.021), 1u);
    EXPECT_EQ(ticksAt(0.041), 0u);
    EXPECT_EQ(ticksAt(0.042), 1u);
}

TEST_F(TreeClasses, ATimerEndsWithItsReleaseEvenInItsOwnTick)
{
    CObject& probe = tree_.add("probe", "probe");
    probe.listenObject("timer", "tick", "one");
    CObject& timer = tree_.add("core:timer", "timer", attributes({{"interval", "1"}}));
    CEventProbe::onEvent = [&](CEventProbe&) {
        CObject::releaseObject(&timer);
        return CError();
    };
    EXPECT_EQ(ticksAt(1.0), 1u);
    EXPECT_EQ(ticksAt(5.0), 0u);
}

} // namespace
} // namespace qel
