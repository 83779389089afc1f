// State switches: views that follow a value.
#include "ViewFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::node;
using test::view;

class ViewStateSwitch : public test::ViewFixture
{
protected:
    static test::TreeNode disabler(const std::string& selector, const std::string& value,
                                   const Attrs& more = {})
    {
        Attrs attrs{{"group-selector", selector},
                    {"value", value},
                    {"target", "^.a w.b"},
                    {"active-attrs", "is-disabled=true;title=off x"},
                    {"inactive-attrs", "is-disabled=false"}};
        attrs.insert(attrs.end(), more.begin(), more.end());
        return node("ui:view-state-switch", "switch", attrs);
    }
    bool isDisabled(const char* path) { return at(path).actsDisabled(); }
};

TEST_F(ViewStateSwitch, SetsOneOfTwoListsOnAllTargets)
{
    load({disabler("one", "0"), view("a"), view("b", {{"is-disabled", "true"}})}, {},
         {node("core:object", "one", {{"group-index", "1"}})});
    EXPECT_FALSE(isDisabled("w.b"));
    set("one", "group-index", "0.0");
    EXPECT_TRUE(isDisabled("w.a"));
    EXPECT_TRUE(isDisabled("w.b"));
    EXPECT_EQ(attr("w.a", "title"), "off x");
    set("one", "group-index", "2");
    EXPECT_FALSE(isDisabled("w.a"));
}

TEST_F(ViewStateSwitch, JoinsOthersInAUnion)
{
    const Attrs together{{"union", "w"}, {"union-id", "panel"}};
    load({disabler("one", "0", together), disabler("two", "0", together), view("a"), view("b")}, {},
         {node("core:object", "one", {{"group-index", "1"}}),
          node("core:object", "two", {{"group-index", "1"}})});
    const auto both = [&](const char* one, const char* two) {
        set("one", "group-index", one);
        set("two", "group-index", two);
        return isDisabled("w.a");
    };
    EXPECT_FALSE(both("1", "1"));
    EXPECT_TRUE(both("0", "1"));
    EXPECT_TRUE(both("0", "0"));
    EXPECT_TRUE(both("1", "0"));
    EXPECT_FALSE(both("1", "1"));
    both("0", "1");
    CObject::releaseObject(root_->findObject("w.switch"));
    EXPECT_FALSE(isDisabled("w.a")) << "what has gone disables nothing";
}

} // namespace
} // namespace qel
