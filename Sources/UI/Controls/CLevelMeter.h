// Bars that show levels.
#pragma once

#include "CLevelMeterBase.h"

namespace qel {

// Tag `ui:level-meter`. A row of lamps for each channel: up to the level they are lit, in the colours of the
// three zones, brighter towards the far end, and one more stands at the peak. Dynamic; of a new level only
// the strip between the two is repainted.
//
//     is-vertical      bars stand; otherwise they lie, and grow to the right
//     is-peak-shown    true by default
//     is-minimal       the lamps that are off are not drawn
//     lamp-size        from one lamp to the next, the gap of a pixel included; 4 by default. The line of the
//                      peak is as thick
//     zone-yellow      where the second zone begins, -12 by default
//     zone-red         the last value of the second zone, 0 by default
//
// Colours by slot: 0 "LevelMeter", 1 to 3 "LevelMeterZone1" to "LevelMeterZone3", 4 "LevelMeterPeak",
// 5 "LevelMeterBGLines".
class CLevelMeter : public CLevelMeterBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError attrInnerBorder() override;

    void draw(CDrawContext& context) override;

protected:
    void updateClips() override;
    void onValuesChanged() override;
    void onRangeChanged() override;

private:
    // One channel, in whole pixels: along the bar from its start, across it from the view's corner.
    struct Bar
    {
        std::int32_t across = 0;
        std::int32_t thickness = 0;
        std::int32_t level = 0; // lit up to here
        std::int32_t peak = 0;  // the upper edge of its line; 0: none
        bool isActive = false;

        bool operator==(const Bar&) const = default;
    };
    static constexpr std::int32_t kZones = 3;

    CError attrLook();
    void layOut();
    void placeBars();
    void measure(Bar& bar, const Channel& channel) const;
    std::int32_t toPixel(double value) const;
    void markStrip(const Bar& bar, std::int32_t from, std::int32_t to);
    void markChange(const Bar& before, const Bar& after);
    CRect rectOf(const Bar& bar, std::int32_t from, std::int32_t to) const;
    void drawBar(CDrawContext& context, const Bar& bar) const;
    void drawLamp(CDrawContext& context, const Bar& bar, std::int32_t from, std::int32_t to) const;

    std::vector<Bar> bars_;
    CPixelRect content_; // inside the inner border, from the view's corner
    std::int32_t length_ = 0;
    std::int32_t lampPx_ = 4;
    std::int32_t gapPx_ = 1;
    std::int32_t zoneEnds_[kZones] = {}; // along the bar

    // Bound attributes.
    bool isVertical_ = false;
    bool isPeakShown_ = true;
    bool isMinimal_ = false;
    double lampSize_ = 4.0;
    double zoneYellow_ = 0.0;
    double zoneRed_ = 0.0;
};

} // namespace qel
