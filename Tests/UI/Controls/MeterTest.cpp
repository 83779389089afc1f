// What meters show of an instance.
#include "CDrawLoad.h"
#include "CLevelMeter.h"
#include "CPaletteObject.h"
#include "CValueList.h"
#include "InstanceFixture.h"
#include "NumberFormat.h"

#include <cmath>
#include <numbers>

namespace qel {
namespace {

constexpr std::int32_t kHeightPx = 120; // two pixels a decibel
constexpr const char* kSource = "plugin.modMain.modMeterOut";

// A meter of 44 x 120 in the corner of a window.
class Meter : public test::InstanceFixture
{
protected:
    void load(const std::string& listenerAttrs = {}, const std::string& meterAttrs = {})
    {
        tree_ = std::make_unique<test::EditorTree>(*host_, R"(
          <ui:value-list-manual name="texts"/>
          <ui:value-list-manual name="channels"/>
          <ui:min-max name="range" min="-60" max="0"/>
          <ui:viz-exchange name="viz" interface-client="ui.client"/>
          <ui:view name="w" is-root-view="true" palette-name="Default" width="128" height="128">
            <ui:level-meter name="meter" placement="overlay" width="44" height="120" is-dynamic="true"
              is-vertical="true" min-max="range" out-value-list="texts" )" +
                                                               meterAttrs +
                                                               R"(>
              <ui:level-meter-listener name="listener" viz-exchange="viz"
                viz-name="plugin.modMain.modMeterOut" )" + listenerAttrs +
                                                               R"(/></ui:level-meter></ui:view>)");
        drawing::setFrameTime(0.0);
        ASSERT_OK(window().announceContentReady());
        ASSERT_OK(map().resize(128, 128));
        tree_->settle();
        frame(0.0);
    }
    CView& window() { return tree_->at<CView>("w"); }
    CLevelMeter& meter() { return tree_->at<CLevelMeter>("w.meter"); }
    CSectorMap& map() { return window().getViewContext().getSectorMap(); }
    void frame(double sec)
    {
        drawing::setFrameTime(sec);
        window().getViewContext().tickTimer();
        ASSERT_OK(window().solveLayout());
        map().paintDirty();
        map().present();
    }
    // The audio side has measured this, in decibels.
    void measure(double levelDb, double peakDb, std::int32_t channel = 0)
    {
        CAudioVizDataMeter data;
        data.id = id_;
        data.element = channel;
        data.level = std::pow(10.0, levelDb / 20.0);
        data.peak = std::pow(10.0, peakDb / 20.0);
        tree_->at<CVizExchange>("viz").onVizData(data);
    }
    void tick(double sec)
    {
        drawing::setFrameTime(sec);
        EXPECT_OK(sendEvent(tree_->at<CVizExchange>("viz"), "on-timer", {}));
        tree_->settle();
    }
    // Makes what is measured from now on the meter's.
    void pretend() { tree_->at<CVizExchange>("viz").onVizSource(kSource, id_); }

    std::uint32_t pixel(std::int32_t x, std::int32_t y)
    {
        return map().getSector(0).image.getRow(y)[x] & 0xFFFFFFU;
    }
    // Which colour a lamp at this height, in decibels below 0, is lit in: 1 to 3 for zones, 4 the peak, 0.
    int lampAt(double db, std::int32_t x = 20)
    {
        const auto y = static_cast<std::int32_t>(-2.0 * db);
        // Between two lamps is a row without light.
        const auto light = [](std::uint32_t color) {
            return (color >> 16) + ((color >> 8) & 255U) + (color & 255U);
        };
        const std::uint32_t shown =
            light(pixel(x, y)) > light(pixel(x, y + 1)) ? pixel(x, y) : pixel(x, y + 1);
        int best = 0;
        double least = 60.0;
        for (int slot = 1; slot <= 4; ++slot) {
            const CPaletteColor& color = *meter().getColor(static_cast<std::size_t>(slot));
            // Lamps differ in brightness but not in hue.
            const double scale =
                std::max<double>(1.0, std::max({shown >> 16, (shown >> 8) & 255U, shown & 255U})) /
                std::max({color.red[255], color.green[255], color.blue[255], std::uint8_t{1}});
            const double distance = std::fabs((shown >> 16) - scale * color.red[255]) +
                                    std::fabs(((shown >> 8) & 255U) - scale * color.green[255]) +
                                    std::fabs((shown & 255U) - scale * color.blue[255]);
            if (scale > 0.4 && distance < least) {
                least = distance;
                best = slot;
            }
        }
        return best;
    }
    std::string text(const char* name) { return meter().getAttrString(name).toUtf8(); }

    static constexpr std::int32_t id_ = 77;
    std::unique_ptr<test::EditorTree> tree_;
};

TEST_F(Meter, ShowsTheLevelOfWhatTheEffectPlaysAndMeasuresOnlyWhileItIsThere)
{
    EXPECT_EQ(host_->get("modMeterOut-enable"), 0.0);
    load();
    EXPECT_EQ(host_->get("modMeterOut-enable"), 1.0);
    EXPECT_EQ(text("sum-value"), "-inf");

    std::vector<float> in(512);
    std::vector<float> out[2] = {in, in};
    const void* inputs[] = {in.data(), in.data()};
    void* outputs[] = {out[0].data(), out[1].data()};
    for (int block = 0; block < 200; ++block) {
        for (int i = 0; i < 512; ++i) {
            in[static_cast<std::size_t>(i)] = static_cast<float>(
                0.25 * std::sin(2.0 * std::numbers::pi * 1000.0 * (block * 512 + i) / 48000.0));
        }
        host_->processBlock({.inputs = inputs, .outputs = outputs, .count = 512, .isDouble = false});
        tick(block * 512 / 48000.0);
    }
    frame(3.0);
    // A sine's effective level is 3 dB below its peak.
    double loudest = 0.0;
    for (const float sample : out[0]) {
        loudest = std::max(loudest, std::fabs(static_cast<double>(sample)));
    }
    const double levelDb = 20.0 * std::log10(loudest) - 3.01;
    ASSERT_EQ(meter().getChannels().size(), 2U);
    EXPECT_NEAR(meter().getChannels()[0].value, levelDb, 0.5);
    EXPECT_NEAR(std::stod(text("sum-value")), levelDb, 0.5);
    EXPECT_GT(lampAt(levelDb - 3.0, 10), 0);
    EXPECT_EQ(lampAt(levelDb + 5.0, 10), 0) << "no higher than the level";

    CObject::releaseObject(&tree_->at<CVizExchange>("viz"));
    tree_.reset();
    EXPECT_EQ(host_->get("modMeterOut-enable"), 0.0) << "in whatever order they end";
}

TEST_F(Meter, LightsTheZonesUpToTheLevelAndALineAtThePeak)
{
    load({}, R"(zone-red="-6")");
    pretend();
    measure(-6.0, -2.0);
    tick(0.01);
    frame(0.02);
    EXPECT_EQ(lampAt(-30.0), 1);
    EXPECT_EQ(lampAt(-12.6), 1);
    EXPECT_EQ(lampAt(-11.0), 2);
    EXPECT_EQ(lampAt(-6.4), 2) << "the last value of the second zone";
    EXPECT_EQ(lampAt(-4.4), 0);
    EXPECT_EQ(lampAt(-2.0), 4);
    measure(-1.0, -1.0);
    tick(0.03);
    frame(0.04);
    EXPECT_EQ(lampAt(-3.2), 3);
    EXPECT_EQ(lampAt(-6.4), 2);

    tree_->set("range", "min", "-120");
    frame(0.05);
    EXPECT_EQ(lampAt(-3.2), 2) << "the scale has moved";
    tree_->set("w.meter", "is-peak-shown", "false");
    measure(-119.0, -1.0);
    tick(0.06);
    frame(0.07);
    EXPECT_EQ(lampAt(-0.6), 0);
}

TEST_F(Meter, RepaintsOnlyTheStripThatChanges)
{
    load();
    pretend();
    measure(-30.0, -10.0, 0);
    measure(-30.0, -10.0, 1);
    tick(0.01);
    frame(0.02);
    measure(-27.0, -10.0, 1);
    tick(0.03);
    EXPECT_EQ(map().getSector(0).dirty, (CRect{24, 54, 20, 6}));
    frame(0.04);
    EXPECT_GT(lampAt(-28.4, 30), 0);
    EXPECT_EQ(lampAt(-28.4, 10), 0);
    measure(-27.05, -10.0, 1);
    tick(0.05);
    EXPECT_FALSE(map().isDirty()) << "less than a pixel";
}

TEST_F(Meter, ForgetsChannelsThatFallSilentAndShowsThoseOfItsList)
{
    load(R"(audio-channels-list="channels")", R"(out-format="%+1.1f")");
    pretend();
    EXPECT_OK(tree_->at<CValueList>("channels").setValues({"L", "R"}));
    measure(-20.0, 0.0, 0);
    measure(3.0, 6.0, 1);
    measure(9.0, 9.0, 5);
    tick(0.0);
    ASSERT_EQ(meter().getChannels().size(), 2U) << "the fifth is not in the list";
    EXPECT_EQ(text("sum-value"), "+3.0");
    EXPECT_EQ(text("sum-peak"), "+6.0");
    measure(-20.0, 0.0, 0);
    tick(0.2);
    measure(-20.0, 0.0, 0);
    tick(0.26);
    EXPECT_TRUE(meter().getChannels()[0].isActive);
    EXPECT_FALSE(meter().getChannels()[1].isActive) << "no data for a quarter of a second";
    EXPECT_EQ(text("sum-value"), "-20.0");
    EXPECT_OK(sendEvent(tree_->at<CVizExchange>("viz"), "clear", {}));
    EXPECT_EQ(text("sum-value"), "-inf");
    frame(0.3);
    EXPECT_EQ(lampAt(-50.0), 0) << "no bar";

    tree_->set("w.meter.listener", "inactive-timeout", "0.009");
    measure(0.0, 0.0, 0);
    tick(100.0);
    tick(200.0);
    EXPECT_TRUE(meter().getChannels()[0].isActive) << "no timeout";
}

TEST_F(Meter, GivesTextsOfEachChannelAndTurnsReductionsUp)
{
    load({}, R"(is-inverted="true" is-export-peaks="true")");
    pretend();
    measure(-400.0, -12.0, 0);
    measure(-6.0, -400.0, 1);
    tick(0.0);
    EXPECT_EQ(tree_->at<CValueList>("texts").getText().toUtf8(), "12.00; -inf");
    EXPECT_EQ(text("sum-value"), "6.00");

    EXPECT_EQ(formatNumber("%.0f", -6.0), "-6");
    EXPECT_EQ(formatNumber("*.0f", -6.0), "6") << "without its sign";
    EXPECT_EQ(formatNumber("%.1f dB %%", -0.04), "0.0 dB %") << "no zero below zero";
    EXPECT_EQ(formatNumber("%+06.2f|", 1.5), "+01.50|");
    EXPECT_EQ(formatNumber("100 %", 1.5), "100 %");
}

} // namespace
} // namespace qel
