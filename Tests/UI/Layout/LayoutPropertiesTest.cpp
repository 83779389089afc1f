// What holds for every layout, tried on random trees.
#include "LayoutRig.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace qel {
namespace {

// Trees of views of all placements. Sizes that depend on the parent stand only where the parent's do not
// depend on its content, since such circles have more than one solution. Percentages are of powers of two, so
// that all sums are exact.
class RandomTree
{
public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    std::string views(int depth, bool isWidthGiven, bool isHeightGiven)
    {
        std::string xml;
        const int count = pick(depth == 0 ? 2 : 0, 5);
        for (int i = 0; i < count; ++i) {
            bool isOwnWidthGiven = true;
            bool isOwnHeightGiven = true;
            xml += "<v n=\"v" + std::to_string(i) + "\"";
            attribute(xml, "width", size(isWidthGiven, isOwnWidthGiven));
            attribute(xml, "height", size(isHeightGiven, isOwnHeightGiven));
            attribute(xml, "placement",
                      oneOf({"inline", "inline", "top", "bottom", "left", "right", "full", "overlay"}));
            attribute(xml, "alignment-h", oneOf({"left", "center", "right"}));
            attribute(xml, "alignment-v", oneOf({"top", "center", "bottom"}));
            attribute(xml, "inline-alignment-h", oneOf({"left", "center", "right"}));
            attribute(xml, "inline-alignment-v", oneOf({"top", "center", "bottom"}));
            attribute(xml, "is-inline-vertical", oneOf({"0", "1"}));
            attribute(xml, "is-new-inline-row", oneOf({"0", "0", "1"}));
            attribute(xml, "inner-border", oneOf({"0", "3", "L2 B1"}));
            attribute(xml, "outer-border", oneOf({"0", "1", "*T2 *L-1"}));
            attribute(xml, "min-width", oneOf({"0", "10"}));
            attribute(xml, "is-visible", oneOf({"1", "1", "1", "0"}));
            xml += ">" + (depth < 3 ? views(depth + 1, isOwnWidthGiven, isOwnHeightGiven) : "") + "</v>";
        }
        return xml;
    }

    int pick(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
    std::string oneOf(const std::vector<std::string>& values)
    {
        return values[static_cast<std::size_t>(pick(0, static_cast<int>(values.size()) - 1))];
    }

private:
    std::string size(bool isParentGiven, bool& isGiven)
    {
        const int form = pick(0, isParentGiven ? 4 : 1);
        isGiven = form != 0;
        const std::string given[] = {"compact", std::to_string(pick(0, 120)), "full", "balanced",
                                     oneOf({"25%", "50%", "100%"})};
        return given[form];
    }
    static void attribute(std::string& xml, const std::string& name, const std::string& value)
    {
        xml += " " + name + "=\"" + value + "\"";
    }

    std::mt19937 random_;
};

std::map<std::string, CRect> rectsOf(const tools::CLayoutTree& tree)
{
    std::map<std::string, CRect> rects;
    for (const auto& [path, rect] : tree.views()) {
        rects[path] = rect;
    }
    return rects;
}

class LayoutProperties : public ::testing::TestWithParam<unsigned>
{};

TEST_P(LayoutProperties, SolvingIsQuietAndChangesUndoThemselves)
{
    RandomTree random(GetParam());
    const std::string xml = random.views(0, true, true);
    test::LayoutRig tree(xml);
    const auto before = rectsOf(tree);

    CLayoutContext& context = tree.view("root").getLayoutContext();
    const std::uint64_t work = context.getNetwork().getEvaluationCount();
    EXPECT_FALSE(context.hasWork());
    tree.solve();
    EXPECT_EQ(context.getNetwork().getEvaluationCount(), work);

    // What a view makes of its place is clipped by its parent.
    for (const auto& [path, rect] : before) {
        if (const CViewArea& area = tree.view(path).getViewArea(); area.getParent()) {
            const CRect& visible = area.getVisibleRect();
            EXPECT_EQ(visible, visible.intersectedWith(area.getParent()->getVisibleRect())) << path;
            EXPECT_EQ(visible, visible.intersectedWith(rect)) << path;
        }
    }

    const std::pair<std::string, std::string> changes[] = {
        {"width", "77"},          {"height", "33"},      {"is-visible", random.oneOf({"0", "1"})},
        {"placement", "overlay"}, {"placement", "left"}, {"is-inline-vertical", "1"},
        {"inner-border", "9"},    {"outer-border", "4"}, {"alignment-h", "center"},
        {"min-width", "50"},      {"min-height", "50"},  {"is-new-inline-row", "1"}};
    for (const auto& [name, value] : changes) {
        auto place = before.begin();
        std::advance(place, random.pick(0, static_cast<int>(before.size()) - 1));
        if (place->first == "root") {
            continue;
        }
        const std::string old = tree.view(place->first).getAttrString(CString(name)).toUtf8();
        tree.set(place->first, name, value);
        tree.solve();
        tree.set(place->first, name, old.empty() ? "0" : old);
        tree.solve();
        EXPECT_EQ(rectsOf(tree), before) << name << " of " << place->first;
    }
}

TEST_P(LayoutProperties, ResultsDependOnNeitherHistoryNorStrangers)
{
    RandomTree random(GetParam());
    const std::string xml = random.views(0, true, true);
    RandomTree strangers(GetParam() + 1000);
    const std::string other = "<v n=\"other\" placement=\"overlay\" width=\"90\" height=\"90\">" +
                              strangers.views(1, true, true) + "</v>";
    const auto alone = rectsOf(test::LayoutRig(xml));
    const auto before = rectsOf(test::LayoutRig(other + xml));
    test::LayoutRig changing(other + xml);
    CObject::releaseObject(&changing.view("root.other"));
    // Formulas of all views are written anew, in other places.
    changing.change("", "width", "100");
    changing.change("", "is-inline-vertical", "1");
    changing.change("", "is-inline-vertical", "0");
    changing.change("", "width", "400");
    const auto after = rectsOf(changing);
    for (const auto& [path, rect] : alone) {
        EXPECT_EQ(before.at(path), rect) << path;
        EXPECT_EQ(after.at(path), rect) << path;
    }
}

TEST_P(LayoutProperties, DockedViewsDoNotOverlapAndStayInside)
{
    RandomTree random(GetParam());
    std::string xml;
    const int count = random.pick(1, 7);
    for (int i = 0; i < count; ++i) {
        const std::string side = random.oneOf({"left", "right", "top", "bottom"});
        const bool isVertical = side == "top" || side == "bottom";
        xml += "<v n=\"v" + std::to_string(i) + "\" placement=\"" + side + "\" " +
               (isVertical ? "width=\"full\" height=\"" : "height=\"full\" width=\"") +
               std::to_string(random.pick(1, 40)) + "\" outer-border=\"" + std::to_string(random.pick(0, 2)) +
               "\"/>";
    }
    xml += R"(<v n="rest" placement="full" width="full" height="full"/>)";
    for (const double scale : {0.8, 1.0, 1.25}) {
        const test::LayoutRig tree(xml, "", scale);
        const CRect root = tree.rect("");
        const auto rects = rectsOf(tree);
        // Corners are rounded, so up to a pixel is shared.
        for (const auto& [path, rect] : rects) {
            EXPECT_TRUE(rect.x >= 0.0 && rect.y >= 0.0 && rect.right() <= root.width + 1.0 &&
                        rect.bottom() <= root.height + 1.0)
                << path << ": " << ::testing::PrintToString(rect);
            for (const auto& [otherPath, other] : rects) {
                const CRect common = rect.intersectedWith(other);
                EXPECT_TRUE(path == "root" || otherPath == "root" || path == otherPath ||
                            std::min(common.width, common.height) <= 1.0 + 1e-4)
                    << path << " and " << otherPath << " at " << scale;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LayoutProperties, ::testing::Range(0u, 24u));

} // namespace
} // namespace qel
