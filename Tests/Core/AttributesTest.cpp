// References inside attribute values, and objects that follow each other's attributes.
#include "TreeFixture.h"

namespace qel {
namespace {

class AttributeTest : public test::TreeFixture
{
protected:
    AttributeTest()
    {
        EXPECT_OK(root_->createChild(parent_, "core:object", "parent"));
        EXPECT_OK(parent_->createChild(object_, "core:object", "object"));
        EXPECT_OK(parent_->createChild(other_, "core:object", "other"));
    }

    // Sets `value` on the object under "x" and returns what was stored.
    std::string expand(const char* value)
    {
        EXPECT_OK(object_->setAttribute("x", value, false));
        return object_->getAttrString("x").toUtf8();
    }

    CObject* parent_ = nullptr;
    CObject* object_ = nullptr;
    CObject* other_ = nullptr;
};

TEST_F(AttributeTest, ExpandsReferencesFromTheInsideOut)
{
    EXPECT_OK(object_->setAttribute("b", "1", false));
    EXPECT_OK(object_->setAttribute("c", "2", false));
    EXPECT_OK(object_->setAttribute("pick", "b", false));
    EXPECT_OK(parent_->setAttribute("inherited", "from parent", false));
    EXPECT_OK(other_->setAttribute("own", "sibling", false));
    EXPECT_OK(object_->setAttribute("open", "{", false));

    const std::pair<const char*, const char*> cases[] = {
        {"{b}{c}", "12"},
        {"{{pick}}", "1"},
        {"<{inherited}>", "<from parent>"},
        {"{nothing}", ""},
        {"}{", "}{"},
        {"a{b", "a{b"},
        {"a}b", "a}b"},
        {"{/parent.other own}!", "sibling!"},
        {"{/^ inherited}", "from parent"},
        {"{/parent.object}", ""},
        {"{/no.such own}", ""},
        {"{/^^ x}", ""},
        {"{name} {full-name}", "object parent.object"},
        {"{open}c}", "2"}, // what a reference yields is expanded in its turn
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(expand(value), expected) << value;
    }
    EXPECT_EQ(object_->getAttribute("inherited"), "from parent");
}

TEST_F(AttributeTest, RefusesValuesThatExpandWithoutEnd)
{
    EXPECT_OK(object_->setAttribute("x", "kept", false));
    EXPECT_OK(object_->setAttribute("u", "}}", false));
    EXPECT_OK(object_->setAttribute("loop", "{loop{u", false));
    EXPECT_FAILS(object_->setAttribute("x", "{loop}}", false), "Value of attribute 'x' expands without end.");

    EXPECT_OK(object_->setAttribute("v0", "0123456789", false));
    CError error;
    for (int i = 1; i < 40 && !error; ++i) {
        const std::string previous = "{v" + std::to_string(i - 1) + "}";
        error = object_->setAttribute("v" + std::to_string(i), CString(previous + previous), false);
    }
    EXPECT_TRUE(error);
    EXPECT_EQ(object_->getAttrString("x"), "kept");
}

TEST_F(AttributeTest, FollowsALiveReference)
{
    EXPECT_OK(other_->setAttribute("color", "red", true));
    EXPECT_OK(other_->setAttribute("scheme", "s", true));
    EXPECT_EQ(expand("{*/parent.other color}"), "red");
    EXPECT_EQ(expand("{*other color}"), "red"); // by a child's name, looked for up the parents
    EXPECT_OK(other_->setAttribute("color", "blue", true));
    EXPECT_EQ(object_->getAttrString("x"), "blue");
    EXPECT_OK(other_->setAttribute("size", "9", true));
    EXPECT_EQ(object_->getAttrString("x"), "blue");

    EXPECT_EQ(expand("{*other scheme}"), ""); // registers, but copies nothing
    EXPECT_OK(other_->setAttribute("scheme", "t", true));
    EXPECT_EQ(object_->getAttrString("x"), "t");

    EXPECT_EQ(expand("{*other}"), "");
    EXPECT_EQ(expand("{*nobody color}"), "");
    EXPECT_EQ(expand("{*/parent.object color}"), ""); // itself

    // A non-string value arrives in its own kind.
    EXPECT_OK(other_->setAttribute("color", CAttrValue(2.5), true));
    EXPECT_EQ(object_->findAttr("x")->kind(), CAttrValue::Kind::kReal);
}

TEST_F(AttributeTest, ForgetsFollowersAndSourcesThatEnd)
{
    EXPECT_OK(object_->setAttribute("a", "{*other b}", true));
    CObject* third = nullptr;
    EXPECT_OK(parent_->createChild(third, "core:object", "third"));
    EXPECT_OK(third->setAttribute("c", "{*object a}", true));

    CObject::releaseObject(object_); // follower of one, source of another
    EXPECT_OK(other_->setAttribute("b", "2", true));
    CObject::releaseObject(third);
}

} // namespace
} // namespace qel
