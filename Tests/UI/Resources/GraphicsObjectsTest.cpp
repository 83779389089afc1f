// The tree's image sets and brushes.
#include "CBrushSetObject.h"
#include "CImageSetObject.h"
#include "CreatorRegistry.h"
#include "GraphicsBytes.h"
#include "Streams/ResourceMap.h"
#include "TreeFixture.h"

namespace qel {
namespace {

using test::TreeNode;

template <class Class>
constexpr CCreatorRow row(const char* tag)
{
    return {tag, &newObject<Class>, &Class::buildClassInfo};
}

class GraphicsObjects : public test::TreeFixture
{
protected:
    GraphicsObjects()
    {
        static constexpr CCreatorRow kRows[] = {row<CObject>("core:object"),
                                                row<CBrushSetObject>("brushset"),
                                                row<CImageSetObject>("imageset"),
                                                {nullptr, nullptr, nullptr}};
        clearCreators();
        releaseError(registerCreators(kRows));
        std::mt19937 random(3);
        images_ = test::imageSetBytes({}, {{0, {{0, 2, test::Picture::random(9, 9, random)}}}}).bytes();
        registerResource("images", images_);
        registerResource("brushes", brushes_);
    }
    ~GraphicsObjects() override { clearCreators(); }

    template <class Class>
    Class& find(const char* path)
    {
        return *dynamic_cast<Class*>(root_->findObject(path));
    }

    std::vector<std::uint8_t> images_;
    std::vector<std::uint8_t> brushes_ = test::brushSetBytes(1.48, 4, 1.24).bytes();
};

TEST_F(GraphicsObjects, LoadWhenAskedShareAndLoadAgainForAnotherScale)
{
    TreeNode tree;
    tree.child(TreeNode("imageset", "is").attr("file", "images"));
    tree.child(TreeNode("imageset", "gone").attr("file", "no-such-images"));
    tree.child(TreeNode("brushset", "bs").attr("file", "brushes"));
    ASSERT_OK(root_.load(tree));

    auto& object = find<CImageSetObject>("is");
    std::shared_ptr<const CImageSet> first;
    std::shared_ptr<const CImageSet> again;
    std::shared_ptr<const CImageSet> larger;
    ASSERT_OK(object.getImageSet(1.0, first));
    ASSERT_OK(object.getImageSet(1.0, again));
    EXPECT_EQ(first, again);
    ASSERT_OK(object.getImageSet(1.25, larger));
    EXPECT_EQ(larger->getImage(0)->getWidth(), 10);
    EXPECT_EQ(first->getImage(0)->getWidth(), 9) << "an editor that is open keeps what it draws";
    const std::weak_ptr<const CImageSet> old = first;
    first = again = nullptr;
    EXPECT_TRUE(old.expired());

    EXPECT_FAILS(find<CImageSetObject>("gone").getImageSet(1.0, first), "no-such-images");
    EXPECT_EQ(first, nullptr);
    std::shared_ptr<const CBrushSet> brushes;
    ASSERT_OK(find<CBrushSetObject>("bs").getBrushSet(1.0, brushes));
    EXPECT_EQ(brushes->findBrush(3.0)->size, 4u);
}

} // namespace
} // namespace qel
