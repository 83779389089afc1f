// Scales beside views.
#include "CMinMax.h"
#include "CNotifyServer.h"
#include "CRuler.h"
#include "ControlFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::node;
using test::view;

struct ServerHolder
{
    CNotifyServer server;
};

// A meter's place of 20 x 80 at (30, 4) with two pixels of border, and a ruler of 30 x 88 to the left of it.
class Ruler : private ServerHolder, public test::ControlFixture
{
protected:
    Ruler()
    {
        releaseError(registerCreators(kRows));
        root_->setNotifyServer(&server);
    }
    ~Ruler() override { CObject::releaseObject(root_->findObject("w")); }

    void loadRuler(Attrs rulerAttrs, const Attrs& rangeAttrs = {})
    {
        addImages("ruler", {{3, 1, 50}, {5, 1, 100}, {8, 1, 200}, {12, 1, 1}, {20, 1, 1}, {28, 1, 1}});
        rulerAttrs.insert(rulerAttrs.end(), {{"placement", "overlay"},
                                             {"width", "30"},
                                             {"height", "88"},
                                             {"ruled-view", "w.ruled"},
                                             {"image-set", "is.ruler"},
                                             {"label-tag", "ui:view"},
                                             {"color", "White"}});
        loadControls({node("ui:ruler", "r", rulerAttrs), view("ruled", {{"placement", "overlay"},
                                                                        {"outer-border", "L30 T4"},
                                                                        {"inner-border", "T2 B2"},
                                                                        {"width", "20"},
                                                                        {"height", "84"},
                                                                        {"color", "Black"}})},
                     {},
                     {node("ui:min-max", "range", rangeAttrs),
                      node("ui:value-list-manual", "names", {{"values", "L;R"}})});
    }
    // Titles of the labels that stand, each with its upper edge or, of those that lie side by side, with its
    // middle.
    std::string labels(bool isLying = false)
    {
        std::string text;
        for (std::size_t i = 0; i < at("w.r").getChildCount(); ++i) {
            auto& label = *dynamic_cast<CView*>(at("w.r").getChild(i));
            if (label.getViewArea().isVisible()) {
                const CRect& area = label.getArea();
                text += label.getAttrString("title").toUtf8() + "@" +
                        std::to_string(static_cast<int>(isLying ? area.x + area.width / 2 : area.y)) + " ";
            }
        }
        return text;
    }

private:
    static constexpr CCreatorRow kRows[] = {
        test::creatorRow<CMinMax>("ui:min-max"),
        test::creatorRow<CRuler>("ui:ruler"),
        {nullptr, nullptr, nullptr},
    };
};

TEST_F(Ruler, MarksStandWhereTheMeasuredViewHasTheirValues)
{
    loadRuler({{"min-max", "range"}, {"label-format", "*.0f"}, {"step-major", "12"}, {"step-minor", "6"}},
              {{"min", "-48"}});
    frame(0.1);
    EXPECT_EQ(labels(), "48@80 36@60 24@40 12@20 0@0 ") << "centred on their marks, which start at row 6";
    EXPECT_EQ(at("w.r.label").getArea().right(), 22.0) << "clear of the ticks";
    EXPECT_EQ(valuesAcross(6, 19, 30), "0x3 200x8") << "zero";
    EXPECT_EQ(valuesAcross(16, 25, 30), "0x2 50x3");
    EXPECT_EQ(valuesAcross(26, 25, 30), "100x5");
    EXPECT_EQ(valuesAcross(85, 25, 30), "100x5") << "the last one is still within the view";

    set("range", "min", "-24");
    frame(0.2);
    EXPECT_EQ(labels(), "24@80 12@40 0@0 ");
    set("w.ruled", "height", "44");
    frame(0.3);
    EXPECT_EQ(labels(), "24@40 12@20 0@0 ");
    set("w.ruled", "height", "28");
    frame(0.4);
    EXPECT_EQ(labels(), "24@24 0@0 ") << "no room for all";
    set("w.r", "is-show-labels", "false");
    frame(0.5);
    EXPECT_EQ(labels(), "");
}

TEST_F(Ruler, TitlesStandBelowTheirShares)
{
    loadRuler({{"titles", "names"},
               {"outer-border", "L30 T90"},
               {"is-show-hairlines", "false"},
               {"height", "10"},
               {"label-size", "9"}});
    frame(0.1);
    EXPECT_EQ(labels(true), "L@35 R@45 ");
    set("names", "values", "A;B;C;D");
    frame(0.2);
    EXPECT_EQ(labels(true), "A@33 C@43 ") << "too close for all";
    set("w.r", "label-size", "5");
    frame(0.3);
    EXPECT_EQ(labels(true), "A@32 B@37 C@42 D@47 ");
}

TEST_F(Ruler, LabelsNeverOverlapAndScalesFollowTheirCurve)
{
    loadRuler({{"min-max", "range"}});
    auto& range = *dynamic_cast<CMinMax*>(root_->findObject("range"));
    const auto check = [&](RulerScaleOptions options) {
        std::size_t count = 0;
        double last = -1.0;
        for (const RulerMark& mark : layoutRulerScale(range, options)) {
            if (mark.hasLabel) {
                EXPECT_TRUE(last < 0.0 || (mark.position - last) * options.lengthPx >= options.labelPx)
                    << options.lengthPx << ": " << mark.value;
                last = mark.position;
                ++count;
            }
        }
        return count;
    };
    for (double length = 5.0; length < 400.0; length += 7.0) {
        EXPECT_GT(check({.lengthPx = length}), 0U);
        check({.lengthPx = length, .isWaveform = true});
    }
    set("range", "scale-power", "2.0");
    EXPECT_GT(check({.lengthPx = 200.0, .isLinear = true}), check({.lengthPx = 200.0}))
        << "the lower end has less room";
    EXPECT_NEAR(range.toPosition(-30.0), 0.25, 1e-12);
    EXPECT_NEAR(range.toValue(0.25), -30.0, 1e-9);

    set("range", "scale-power", "1.0");
    set("range", "is-log", "true");
    EXPECT_EQ(range.toPosition(-30.0), 0.5) << "no ratios below zero";
    set("range", "min", "10");
    set("range", "max", "1000");
    EXPECT_NEAR(range.toPosition(100.0), 0.5, 1e-12);
    EXPECT_NEAR(range.toValue(0.5), 100.0, 1e-9);
    EXPECT_EQ(check({.lengthPx = 400.0}), 7U) << "10, 20, 50, 100, ...";
    EXPECT_EQ(check({.lengthPx = 60.0}), 3U) << "10, 100, 1000";
}

} // namespace
} // namespace qel
