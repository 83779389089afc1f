// A scale beside a view.
#pragma once

#include "CView.h"
#include "RulerScale.h"

namespace qel {

class CDynamicList;

// Tag `ui:ruler`. Stands left of, right of, above or below the view that it measures, as the layout puts it;
// marks keep to the inside of that view's inner border. Labels are children made from a template; where they
// would touch, every second one stands, or every fourth, and so on.
//
//     ruled-view            path of the view
//     min-max               path of the range that it shows
//     titles                path of a list: its texts, side by side, in place of numbers
//     ruler-size            thickness, 25 by default
//     step-minor, step-major
//                           distances of marks, 3 and 6
//     label-tag             template of a label, "ui:ruler-label" by default
//     label-format          as in NumberFormat.h, "%.0f" by default
//     label-size            room that a label needs along the ruler, 13 by default
//     label-height          its height; as label-size where there is none (0, the default)
//     label-shift           its distance from the marks, 3 by default
//     is-labels-linear      marks at even distances, whatever the curve of the range
//     is-waveform           the range twice, upwards and downwards from the middle
//     is-show-labels, is-show-hairlines
//                           both true by default
//     is-hairline-inward    lines that fade away from the view in place of ticks
//
// The marks are the images of the ruler's set. Takes the events "update" and "titles-update" (everything
// anew), "ruled-view-update", "hairlines-update".
class CRuler : public CView
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError onAreaSettled() override;

    virtual CError update();

    void draw(CDrawContext& context) override;

private:
    // Of the ruler, seen from the view.
    enum class Side : std::uint32_t
    {
        kLeft,
        kRight,
        kAbove,
        kBelow
    };
    struct Label
    {
        CString text;
        double alongPx = 0.0; // its middle
        double roomPx = 0.0;
        RulerMark::Grade grade = RulerMark::kMajor;
    };

    CError onContentReady(const CAttrMap& parameters);
    CError eventUpdate(const CAttrMap&) { return update(); }
    CError attrLook();
    CError attrSize();
    void adoptSize();
    bool isStanding() const { return side_ == Side::kLeft || side_ == Side::kRight; }
    bool measureView();
    CError layOutScale(std::vector<Label>& labels);
    CError layOutTitles(std::vector<Label>& labels);
    CError placeLabels(const std::vector<Label>& labels);
    CError placeLabel(std::size_t index, const Label& label);
    CRect labelRect(const Label& label) const;
    double alongPx(double position) const;
    std::uint32_t imageOf(RulerMark::Grade grade) const;

    CDynamicList* titles_ = nullptr;
    Side side_ = Side::kLeft;
    double startPx_ = 0.0; // of the scale, along the ruler from its own corner
    double lengthPx_ = 0.0;
    std::vector<RulerMark> marks_;
    std::vector<CString> labels_; // full names
    bool isReady_ = false;

    // Bound attributes.
    CString ruledViewPath_;
    CString minMaxPath_;
    CString titlesPath_;
    CString labelTag_;
    CString labelFormat_;
    double rulerSize_ = 0.0;
    double stepMinor_ = 0.0;
    double stepMajor_ = 0.0;
    double labelSize_ = 0.0;
    double labelHeight_ = 0.0;
    double labelShift_ = 0.0;
    bool isLinear_ = false;
    bool isWaveform_ = false;
    bool isShowLabels_ = true;
    bool isShowHairlines_ = true;
    bool isHairlineInward_ = false;
};

} // namespace qel
