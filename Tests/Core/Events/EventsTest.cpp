// Named events: subscriptions, delivery at once and by way of the loop, and who may be gone by then.
#include "EventRig.h"
#include "Trace.h"

namespace qel {
namespace {

using test::CEventProbe;
using test::EventRig;
using test::withX;
using Log = std::vector<std::string>;

constexpr CCreatorRow kProbes[] = {{"probe", newObject<CEventProbe>, CEventProbe::buildClassInfo},
                                   {nullptr, nullptr, nullptr}};

class Events : public ::testing::Test
{
protected:
    Events()
    {
        CObject::setSharedObject(&*shared_);
        CEventProbe::log.clear();
        CEventProbe::threads.clear();
    }
    ~Events() override
    {
        CEventProbe::onEvent = nullptr;
        tree_.end();
        CObject::setSharedObject(nullptr);
    }

    Log takeLog() { return std::exchange(CEventProbe::log, {}); }

    test::TestClasses classes_{kProbes};
    test::TreeRoot shared_;
    EventRig tree_;
    CObject& sender_ = tree_.add("core:object", "sender");
    CObject& a_ = tree_.add("probe", "a");
    CObject& b_ = tree_.add("probe", "b");
};

TEST_F(Events, ReachSubscribersAtOnceInOrderOfSubscription)
{
    b_.listenObject("sender", "go", "one");
    a_.listenObject("^sender", "go", "two");
    a_.listenObject("^sender", "go", "one");
    a_.listenObject("sender", "go", "one"); // the same again
    a_.listenObject("sender", "other", "one");

    EXPECT_OK(sender_.notify("go", withX("5"), false));
    EXPECT_EQ(takeLog(), (Log{"b:one:5", "a:two:5", "a:one:5"}));
    EXPECT_OK(a_.notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{});
}

TEST_F(Events, ASubscriptionMayComeBeforeItsSenderAndEndsWithTheListener)
{
    a_.listenObject("late", "go", "one");
    b_.listenObject("late", "go", "one");
    CObject& late = tree_.add("core:object", "late");
    EXPECT_OK(late.notify("go", {}, false));
    EXPECT_EQ(takeLog(), (Log{"a:one:", "b:one:"}));
    CObject::releaseObject(&a_);
    EXPECT_OK(late.notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{"b:one:"});
}

TEST_F(Events, UnlistenUndoesListenEvenWhenTheSenderHasGoneOrChanged)
{
    CObject& second = tree_.add("core:object", "sender");
    a_.listenObject("^sender", "go", "one");
    CObject::releaseObject(&sender_); // from here on the path leads to the second
    a_.unlistenObject("^sender", "go", "one");
    CObject& again = tree_.add("core:object", "sender");
    EXPECT_OK(again.notify("go", {}, false));
    EXPECT_OK(second.notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{});

    a_.listenObject("sender#1", "go", "one");
    CObject::releaseObject(&second);
    a_.unlistenObject("^sender#1", "go", "one"); // another path to the same name
    EXPECT_OK(tree_.add("core:object", "sender#1").notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{});
}

TEST_F(Events, APathToASenderStillToComeMayBeRelative)
{
    CObject& c = tree_.add("probe", "c");
    EXPECT_OK(c.setAttribute("pop-up", "^window.menu", false));
    c.listenObject("^window.row#2.button", "go", "one");
    c.listenObject("$pop-up.list", "go", "one");
    c.listenObject(".own.^child", "go", "one");
    CObject& window = tree_.add("core:object", "window");
    const auto add = [](CObject& parent, const char* name) -> CObject& {
        CObject* child = nullptr;
        EXPECT_OK(parent.createChild(child, "core:object", name));
        return *child;
    };
    EXPECT_OK(add(add(window, "row#2"), "button").notify("go", withX("1"), false));
    EXPECT_OK(add(add(window, "menu"), "list").notify("go", withX("2"), false));
    EXPECT_OK(add(c, "child").notify("go", withX("3"), false));
    EXPECT_EQ(takeLog(), (Log{"c:one:1", "c:one:2", "c:one:3"}));
}

TEST_F(Events, AHandlerMayReleaseItsOwnObjectAndGoOn)
{
    a_.listenObject("sender", "go", "one");
    a_.listenObject("sender", "go", "two");
    std::string nameAfterwards;
    CEventProbe::onEvent = [&](CEventProbe& probe) {
        CObject::releaseObject(&probe);
        CObject::releaseObject(&probe);
        tree_.end();
        nameAfterwards = probe.getFullName().toUtf8();
        return CError();
    };
    EXPECT_OK(sender_.notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{"a:one:"});
    EXPECT_EQ(nameAfterwards, "a");
}

TEST_F(Events, AHandlerMayEndTheWholeTree)
{
    a_.listenObject("sender", "go", "one");
    b_.listenObject("sender", "go", "one");
    CEventProbe::onEvent = [&](CEventProbe&) {
        tree_.end();
        return CError();
    };
    EXPECT_OK(sender_.notify("go", {}, false));
    EXPECT_EQ(takeLog(), Log{"a:one:"});
}

class PostedEvents : public Events
{
protected:
    PostedEvents()
    {
        tree_.server->setEventLoop(&*loop_);
        a_.listenObject("sender", "go", "one");
        b_.listenObject("sender", "go", "one");
    }

    std::optional<CEventLoop> loop_{std::in_place};
};

TEST_F(PostedEvents, OfAllThreadsRunOnTheTreesThreadInEachThreadsOrder)
{
    constexpr int kThreads = 3;
    constexpr int kEvents = 200;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, thread] {
            for (int i = 0; i < kEvents; ++i) {
                const std::string x = std::to_string(thread * kEvents + i);
                EXPECT_OK(sender_.notify("go", withX(x.c_str()), false));
            }
        });
    }
    // Subscriptions and objects come and go meanwhile.
    for (int i = 0; i < 50; ++i) {
        CObject& passer = tree_.add("probe", "passer");
        passer.listenObject("sender", "go", "two");
        loop_->drain();
        CObject::releaseObject(&passer);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    loop_->drain();

    std::vector<int> seenByA;
    for (const std::string& line : takeLog()) {
        if (line.starts_with("a:one:")) {
            seenByA.push_back(std::stoi(line.substr(6)));
        }
    }
    EXPECT_EQ(seenByA.size(), std::size_t{kThreads * kEvents});
    for (int thread = 0; thread < kThreads; ++thread) {
        std::vector<int> own;
        std::ranges::copy_if(seenByA, std::back_inserter(own), [&](int x) { return x / kEvents == thread; });
        EXPECT_TRUE(std::ranges::is_sorted(own));
    }
    for (const std::thread::id id : CEventProbe::threads) {
        EXPECT_EQ(id, std::this_thread::get_id());
    }
}

TEST_F(PostedEvents, OutliveTheirSenderAndSkipListenersThatAreGone)
{
    EXPECT_OK(sender_.notify("go", withX("1"), true));
    CObject::releaseObject(&sender_);
    CObject::releaseObject(&a_);
    tree_.add("probe", "a"); // of the same name, but another object
    loop_->drain();
    EXPECT_EQ(takeLog(), Log{"b:one:1"});
}

TEST_F(PostedEvents, LetAnObjectEndFromInsideItsOwnHandler)
{
    CEventProbe::onEvent = [](CEventProbe& probe) {
        CAttrMap parameters;
        parameters["sender"] = CAttrValue(probe.getFullName());
        return probe.notifyTo("^", "release-child-bridged", parameters, true);
    };
    EXPECT_OK(sender_.notifyTo("a", "go", {}, false));
    EXPECT_OK(sender_.notifyTo("a", "go", {}, false)); // asked twice: the second finds nobody
    EXPECT_NE((*tree_.root)->findObject("a"), nullptr);
    loop_->drain();
    EXPECT_EQ((*tree_.root)->findObject("a"), nullptr);
    EXPECT_NE((*tree_.root)->findObject("b"), nullptr);
}

} // namespace
} // namespace qel
