// Naming, paths, templates, life cycle and release of object trees.
#include "CreatorRegistry.h"
#include "Trace.h"
#include "TreeFixture.h"

#include <functional>

namespace qel {
namespace {

using test::TreeNode;

// Writes what happens to it into a log, and can be told to fail.
class CTreeProbe : public CObject
{
public:
    static inline std::vector<std::string> log;
    static inline std::function<void(CTreeProbe&)> onRelease;

    static void buildClassInfo(CClassInfo& info)
    {
        CObject::buildClassInfo(info);
        info.handle<&CTreeProbe::attrSecond>("second");
        info.handle<&CTreeProbe::attrFirst>("first");
        info.bind<&CTreeProbe::count_>("count", 5);
        info.handle<&CTreeProbe::attrClose>("close");
    }

    CError init() override
    {
        QEL_TRY(CObject::init(), getFullName());
        note("init");
        if (getAttrString("fail") == "init") {
            QEL_FAIL(getFullName(), "@qelstr_CProbe_init_Told Told to fail.");
        }
        return {};
    }
    CError initChilds() override
    {
        QEL_TRY(CObject::initChilds(), getFullName());
        note("initChilds:" + std::to_string(getChildCount()));
        return {};
    }
    void release() override
    {
        note("release");
        if (onRelease) {
            onRelease(*this);
        }
        CObject::release();
    }
    CError attrFirst()
    {
        note("first=" + getAttrString("first").toUtf8());
        return {};
    }
    CError attrSecond()
    {
        note("second=" + getAttrString("second").toUtf8());
        return {};
    }
    // As a pop-up that closes itself.
    CError attrClose()
    {
        CObject* ended = findObject(getAttrString("close"));
        releaseObject(ended);
        note("closed");
        return {};
    }

    std::int32_t count_ = 0;

private:
    void note(const std::string& what) { log.push_back(getFullName().toUtf8() + " " + what); }
};

class CObjectTest : public test::TreeFixture
{
protected:
    CObjectTest()
    {
        CTreeProbe::log.clear();
        CTreeProbe::onRelease = nullptr;
        releaseError(registerCreator({"test:probe", &newObject<CTreeProbe>, &CTreeProbe::buildClassInfo}));
    }
    ~CObjectTest() override { clearCreators(); }

    CObject* add(CObject& parent, const char* name, const char* tag = "core:object")
    {
        CObject* child = nullptr;
        EXPECT_OK(parent.createChild(child, tag, name));
        return child;
    }
};

TEST_F(CObjectTest, NumbersChildrenOfOneNameFromTheCounter)
{
    EXPECT_EQ(add(*root_, "item")->getFullName(), "item");
    EXPECT_EQ(add(*root_, "item")->getFullName(), "item#1");
    EXPECT_EQ(add(*root_, "item")->getAttrString("name"), "item#2");

    // A wanted index starts the counter there, and lower ones stay free.
    EXPECT_EQ(add(*root_, "a#5")->getFullName(), "a#5");
    EXPECT_EQ(add(*root_, "a")->getFullName(), "a");
    EXPECT_EQ(add(*root_, "a")->getFullName(), "a#6");
    EXPECT_EQ(add(*root_, "b#2147483647")->getFullName(), "b#2147483647");
    EXPECT_EQ(add(*root_, "b#2147483647")->getFullName(), "b#-2147483648");

    CObject::releaseObject(root_->findObject("item#1"));
    EXPECT_EQ(add(*root_, "item#1")->getFullName(), "item#1");
    EXPECT_EQ(add(*add(*root_, "deep"), "leaf")->getFullName(), "deep.leaf");
}

TEST_F(CObjectTest, FindsObjectsByPath)
{
    CObject* a = add(*root_, "a");
    CObject* b = add(*a, "b");
    CObject* x0 = add(*b, "x");
    CObject* x1 = add(*b, "x");
    CObject* x2 = add(*b, "x");
    CObject* s = add(*add(*shared_, "audio"), "modMain");
    EXPECT_OK(a->setAttribute("where", "b.x#1", true));
    EXPECT_OK(a->setAttribute("loop", "$loop", true));
    EXPECT_OK(b->setAttribute("up", "/a", true));

    struct Case
    {
        CObject* from;
        const char* path;
        CObject* found;
    };
    const Case cases[] = {
        {x0, "a.b", b},
        {x0, "a.b.", b},
        {x0, "a..b", b},
        {x0, "", nullptr},
        {x0, ".", x0},
        {x0, "^", b},
        {x0, "^^", a},
        {x0, "^^^", &*root_},
        {x0, "^^^^", nullptr},
        {x0, "^x#+1", x1},
        {x0, "^x#-0", x2},
        {x0, "^x#-2", x0},
        {x0, "^x#-3", nullptr},
        {x0, "^x#+9", nullptr},
        {x0, "^x#2", x2},
        {x0, "^x#7", nullptr},
        {x0, "^x#", nullptr},
        {x0, "^x#+-1", nullptr},
        {x0, ".nothing", nullptr},
        {a, "$where", x1},
        {a, "$absent.b", b},
        {a, "$absent", nullptr},
        {a, "$loop", nullptr},
        {b, "$up.b", b},
        {x0, "^^.b.x", x0},
        {x0, "ignored/a", a},
        {&*root_, "b", nullptr},
        {x0, "shared::audio.modMain", s},
        {x0, "shared::", nullptr},
        {x0, "shared::audio.^audio", s->getParent()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.from->findObject(c.path), c.found) << c.path;
    }
    CObject::setSharedObject(nullptr);
    EXPECT_EQ(x0->findObject("shared::audio"), nullptr);
    CObject::setSharedObject(&*shared_);
}

TEST_F(CObjectTest, RunsEachNodeThroughItsLifeInOrder)
{
    TreeNode inner("test:probe", "inner");
    inner.attr("first", "1");
    TreeNode outer("test:probe", "outer");
    // Handlers run by the order of declaration, once, with the last value.
    outer.attr("first", "x").attr("second", "y").attr("first", "{} z").child(inner).child(inner);
    ASSERT_OK(root_.load(TreeNode().child(outer)));
    EXPECT_EQ(CTreeProbe::log,
              (std::vector<std::string>{"outer init", "outer second=y", "outer first=x z", "outer.inner init",
                                        "outer.inner first=1", "outer.inner initChilds:0",
                                        "outer.inner#1 init", "outer.inner#1 first=1",
                                        "outer.inner#1 initChilds:0", "outer initChilds:2"}));
    EXPECT_EQ(root_->findObject("outer.inner")->getInitState(), CObject::InitState::kReady);

    CTreeProbe::log.clear();
    CObject::releaseObject(root_->findObject("outer"));
    EXPECT_EQ(CTreeProbe::log,
              (std::vector<std::string>{"outer release", "outer.inner#1 release", "outer.inner release"}));
}

TEST_F(CObjectTest, InstantiatesTheNearestTemplate)
{
    TreeNode body("test:probe");
    body.attr("first", "template").attr("second", "template {label}").child(TreeNode("test:probe", "part"));
    ASSERT_OK(shared_.load(TreeNode().child(TreeNode::templateOf("ui:x", body))));
    CTreeProbe::log.clear();
    EXPECT_EQ(shared_->getChild(0)->getChildCount(), 0u);
    EXPECT_TRUE(shared_->getChild(0)->isTemplate());

    CAttrMap attributes;
    attributes["first"] = CAttrValue("mine");
    attributes["label"] = CAttrValue("L");
    CTreeProbe* probe = nullptr;
    ASSERT_OK(root_->createChild(probe, "ui:x", "one", true, nullptr, &attributes));
    EXPECT_EQ(probe->getTag(), "ui:x");
    EXPECT_EQ(CTreeProbe::log,
              (std::vector<std::string>{"one init", "one second=template L", "one first=mine",
                                        "one.part init", "one.part initChilds:0", "one initChilds:1"}));

    // A template of the instance tree hides the shared one; the later of two of one name wins.
    TreeNode first("core:object");
    TreeNode second("core:object");
    second.attr("which", "second");
    ASSERT_OK(root_.load(
        TreeNode().child(TreeNode::templateOf("ui:x", first)).child(TreeNode::templateOf("ui:x", second))));
    CObject* plain = nullptr;
    ASSERT_OK(add(*root_, "box")->createChild(plain, "ui:x", "two", true));
    EXPECT_EQ(plain->getAttrString("which"), "second");

    EXPECT_TRUE(root_->hasTemplate("ui:x"));
    EXPECT_FALSE(root_->hasTemplate("ui:y"));
    EXPECT_FAILS(root_->createChild(plain, "ui:y", "three", true),
                 "Run-time template 'ui:y' does not exist.");
    EXPECT_FAILS(root_->createChild(probe, "ui:x", "four"),
                 "Object of invalid class created (child tag 'ui:x', child name 'four').");
    EXPECT_EQ(root_->findObject("four"), nullptr);
}

TEST_F(CObjectTest, ReleasesAFailedChildWithAllItHasGrown)
{
    TreeNode bad("test:probe", "bad");
    bad.attr("fail", "init");
    TreeNode outer("test:probe", "outer");
    outer.child(TreeNode("test:probe", "good")).child(bad);
    const CError error = root_.load(TreeNode().child(TreeNode("test:probe", "before")).child(outer));
    ASSERT_TRUE(error);
    EXPECT_NE(error.lines().front().toUtf8().find("// outer.bad: Told to fail."), std::string::npos)
        << error.text();
    EXPECT_EQ(root_->findObject("outer"), nullptr);
    EXPECT_NE(root_->findObject("before"), nullptr);
}

TEST_F(CObjectTest, SurvivesHandlersThatReleaseTheirOwnObject)
{
    const auto addPopup = [&] {
        CObject* popup = add(*root_, "popup", "test:probe");
        add(*popup, "button");
        CTreeProbe::log.clear();
        return popup;
    };
    const std::vector<std::string> closed{"popup release", "popup closed"};

    EXPECT_OK(addPopup()->setAttribute("close", ".", true));
    EXPECT_EQ(root_->findObject("popup"), nullptr);
    EXPECT_EQ(CTreeProbe::log, closed);

    const CAttrMap closing{{"close", CAttrValue(".")}, {"count", CAttrValue("3")}};
    EXPECT_OK(addPopup()->setAttributes(closing, true));
    EXPECT_EQ(CTreeProbe::log, closed);

    // The object followed goes while its followers are told: what comes behind the one that ended it hears
    // nothing, and nobody is left to follow.
    CObject* popup = addPopup();
    CObject* first = add(*root_, "first", "test:probe");
    EXPECT_OK(first->setAttribute("close", "{*popup x}", false));
    EXPECT_OK(add(*root_, "last", "test:probe")->setAttribute("first", "{*popup x}", false));
    EXPECT_OK(popup->setAttribute("x", "popup", true));
    EXPECT_EQ(root_->findObject("popup"), nullptr);
    EXPECT_OK(first->setAttribute("close", ".", true));

    CTreeProbe* unborn = nullptr;
    EXPECT_FAILS(root_->createChild(unborn, "test:probe", "unborn", false, nullptr, &closing),
                 "Object was released while it came up.");
    EXPECT_EQ(unborn, nullptr);
    EXPECT_EQ(root_->findObject("unborn"), nullptr);
    TreeNode passing("test:probe", "passing");
    EXPECT_OK(root_.load(TreeNode().child(passing.attr("close", ".").child(TreeNode("core:object", "x")))));
    EXPECT_EQ(root_->findObject("passing"), nullptr);
}

TEST_F(CObjectTest, SurvivesAReleaseThatEndsSiblings)
{
    CObject* box = add(*root_, "box");
    add(*box, "first", "test:probe");
    add(*box, "last", "test:probe");
    CTreeProbe::onRelease = [](CTreeProbe& probe) {
        if (probe.getAttrString("name") == "last") {
            CObject::releaseObject(probe.findObject("^first"));
        }
    };
    CObject::releaseObject(box);
    EXPECT_EQ(root_->getChildCount(), 0u);

    CObject* child = add(*root_, "child");
    CAttrMap parameters;
    parameters["sender"] = CAttrValue(child->getFullName());
    EXPECT_OK(root_->onReleaseChild(parameters));
    EXPECT_OK(root_->onReleaseChild(parameters)); // gone: ignored
    EXPECT_EQ(root_->getChildCount(), 0u);
}

} // namespace
} // namespace qel
