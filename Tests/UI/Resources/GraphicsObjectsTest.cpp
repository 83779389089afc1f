// The tree's image sets, brushes, fonts and palettes.
#include "CBrushSetObject.h"
#include "CFontObject.h"
#include "CImageSetObject.h"
#include "CPaletteObject.h"
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
        static constexpr CCreatorRow kRows[] = {
            row<CObject>("core:object"),      row<CBrushSetObject>("brushset"), row<CFontObject>("font"),
            row<CImageSetObject>("imageset"), row<CPaletteObject>("palette"),   {nullptr, nullptr, nullptr}};
        clearCreators();
        releaseError(registerCreators(kRows));
        std::mt19937 random(3);
        images_ = test::imageSetBytes({}, {{0, {{0, 2, test::Picture::random(9, 9, random)}}}}).bytes();
        registerResource("images", images_);
    }
    ~GraphicsObjects() override { clearCreators(); }

    template <class Class>
    Class& find(const char* path)
    {
        return *dynamic_cast<Class*>(root_->findObject(path));
    }
    const std::vector<std::uint8_t>& keep(const char* name, const test::FileBytes& bytes)
    {
        kept_.push_back(std::make_unique<std::vector<std::uint8_t>>(bytes.bytes()));
        registerResource(name, *kept_.back());
        return *kept_.back();
    }

    std::vector<std::uint8_t> images_;
    std::vector<std::unique_ptr<std::vector<std::uint8_t>>> kept_;
};

TEST_F(GraphicsObjects, LoadWhenAskedShareAndLoadAgainForAnotherScale)
{
    TreeNode tree;
    tree.child(TreeNode("imageset", "is").attr("file", "images"));
    tree.child(TreeNode("imageset", "gone").attr("file", "no-such-images"));
    tree.child(TreeNode("brushset", "bs").attr("file", "brushes"));
    ASSERT_OK(root_.load(tree));
    keep("brushes", test::brushSetBytes(1.48, 4, 1.24));

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

TEST_F(GraphicsObjects, GroupTheStylesOfAFont)
{
    const auto style = [](const char* name, const char* file) {
        return TreeNode("core:object", name).attr("is-font-style", "true").attr("file", file);
    };
    TreeNode tree;
    tree.child(TreeNode("font", "f").child(style("regular", "thin")).child(style("bold", "fat")));
    tree.child(TreeNode("font", "empty").child(TreeNode("core:object", "note").attr("file", "thin")));
    ASSERT_OK(root_.load(tree));
    keep("thin", test::fontBytes({}, 14, 3, 2));
    keep("fat", test::fontBytes({}, 17, 5, 5));

    std::shared_ptr<const CFont> font;
    ASSERT_OK(find<CFontObject>("f").getFont(CFontStyle::kBold, 1.0, font));
    EXPECT_EQ(font->getLineHeight(), 17u);
    ASSERT_OK(find<CFontObject>("f").getFont(CFontStyle::kItalic, 1.0, font));
    EXPECT_EQ(font->getLineHeight(), 14u) << "a style that is not there is regular";
    ASSERT_OK(find<CFontObject>("empty").getFont(CFontStyle::kRegular, 1.0, font));
    EXPECT_EQ(font, nullptr);

    TreeNode wrong;
    wrong.child(TreeNode("font", "g").child(style("slanted", "thin")));
    EXPECT_FAILS(root_.load(wrong), "Unknown font style 'slanted'.");
}

TEST_F(GraphicsObjects, GroupThePalettes)
{
    TreeNode tree;
    TreeNode group("palette", "pal");
    group.child(TreeNode("palette", "Default").attr("file", "a")).child(TreeNode("palette", "Blue"));
    tree.child(group);
    ASSERT_OK(root_.load(tree));
    keep("a", test::paletteBytes({{"Default", 0.5, 1, 2, 3}}, {}));

    auto& palettes = find<CPaletteObject>("pal");
    EXPECT_EQ(palettes.getPaletteNames(), (std::vector<CString>{"Default", "Blue"}));
    std::shared_ptr<const CPalette> palette;
    ASSERT_OK(palettes.findPalette("Default")->getPalette(palette));
    EXPECT_EQ(palette->findColor("x")->opacity, 0.5);
    ASSERT_OK(palettes.getPalette(palette));
    EXPECT_EQ(palette, nullptr) << "a group has no colors of its own";
    EXPECT_EQ(palettes.findPalette("Pink"), nullptr);
}

} // namespace
} // namespace qel
