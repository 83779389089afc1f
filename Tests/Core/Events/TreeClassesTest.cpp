// The small classes that trees are joined with: timer, attribute doubler, global settings.
#include "CAttrDoubler.h"
#include "CGlobalSettings.h"
#include "CTimer.h"
#include "EventTestTree.h"

#include <cmath>

namespace qel {
namespace {

using test::CEventProbe;
using test::EventTree;

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
    CError create(const CString& tag, const CAttrMap& attributes)
    {
        CObject* object = nullptr;
        return (*tree_.root)->createChild(object, tag, "made", false, nullptr, &attributes);
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
    EventTree tree_;
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

TEST_F(TreeClasses, ADoublerSetsAllItsTargetsInOrder)
{
    CObject& a = tree_.add("core:object", "a");
    CObject& b = tree_.add("core:object", "b");
    CObject& doubler = tree_.add("core:attr-doubler", "doubler",
                                 attributes({{"target", "^b  a"}, {"attr", "size"}, {"value", "1"}}));
    EXPECT_EQ(a.getAttrInt("size"), 1);
    EXPECT_EQ(b.getAttrInt("size"), 1);
    a.listenAttribute(b, "size", "copy"); // so that b must come first
    EXPECT_OK(doubler.setAttribute("value", "2", true));
    EXPECT_EQ(a.getAttrInt("size"), 2);
    EXPECT_EQ(a.getAttrInt("copy"), 2);
    CObject::releaseObject(&b);
    EXPECT_OK(doubler.setAttribute("value", "3", true));
    EXPECT_EQ(a.getAttrInt("size"), 3);
}

TEST_F(TreeClasses, GlobalSettingsFollowWhatTheyReferTo)
{
    CObject& data = tree_.add("core:object", "data");
    EXPECT_OK(data.setAttribute("tablet-mode", "true", true));
    EXPECT_OK(data.setAttribute("drag-precision", "0.7", true));
    auto& settings = tree_.add<CGlobalSettings>("core:global-settings", "settings",
                                                attributes({{"tablet-mode", "{*/data tablet-mode}"},
                                                            {"drag-precision", "{*/data drag-precision}"},
                                                            {"mouse-wheel-precision", "fast"},
                                                            {"show-knob-labels", "yes"}}));
    EXPECT_TRUE(settings.isTabletMode());
    EXPECT_EQ(settings.getDragPrecision(), 0.7);
    EXPECT_EQ(settings.getMouseWheelPrecision(), 0.0);
    EXPECT_FALSE(settings.isShowKnobLabels());
    EXPECT_FALSE(settings.isBuiltinRefresh());
    EXPECT_OK(data.setAttribute("drag-precision", "0.25", true));
    EXPECT_EQ(settings.getDragPrecision(), 0.25);
    EXPECT_OK(data.setAttribute("drag-precision", "", true));
    EXPECT_EQ(settings.getDragPrecision(), 0.0);
}

} // namespace
} // namespace qel
