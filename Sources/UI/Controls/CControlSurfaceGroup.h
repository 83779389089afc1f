// Points that are dragged, and sliders.
#pragma once

#include "CUIParamUpdateHandler.h"
#include "CView.h"
#include "FramePieces.h"

namespace qel {

class CColorSwatch;
class CUIParam;

// Tag `ui:control-surface-group`. Children: the ui-params "ui-param-x" and "ui-param-y", each element of
// which is the place of a point, from the left and from the bottom; "ui-param-active", where 0 shows a point
// as switched off. With only one of the first two it is a slider of one handle along that axis.
//
//     color-swatch          path of a CColorSwatch: its colours 0, 1, ... are those of the points, in turn
//     max-x, max-y          the greatest value that a point can have, where the parameter has more
//
// A drag moves one point; with Shift slowly. Ctrl or a double click bring it back to its defaults. The wheel
// moves it along x. Points keep to the inside of the inner border. Each gesture is one step of the history,
// over both parameters. The images are those of the control surface's set.
class CControlSurfaceGroup : public CView, public CUIParamUpdateHandler
{
public:
    CControlSurfaceGroup();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError attrInnerBorder() override;

    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;
    virtual CError onMouseWheel(const CAttrMap& parameters);

    void draw(CDrawContext& context) override;

protected:
    void updateClips() override;
    void onLookChanged() override;

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    static constexpr std::size_t kSliderParts = 3; // pit, filled part, handle

    struct Point
    {
        double norm[2] = {0.0, 0.0}; // along the axes
        CPoint center;               // from the view's corner, pixels
        bool isActive = true;
        CString color; // of the palette; empty: slot 0
    };

    bool isSlider() const { return !params_[0] != !params_[1]; }
    CAxis sliderAxis() const { return params_[0] ? CAxis::kX : CAxis::kY; }
    void layOut();
    void layOutSlider();
    CRect content() const;
    double travel(CAxis axis) const;
    // The position of the parameter at the far end of an axis.
    double endNorm(CAxis axis) const;
    std::size_t pointAt(const CPoint& point) const;
    CError setHovered(std::size_t index);

    CError grip(std::size_t index, const CPoint& point);
    CError drag(const CPoint& point, bool isFine);
    CError letGo();
    CError resetPoint(std::size_t index);
    CError write(std::size_t index, const double (&norm)[2]);

    void drawSlider(CDrawContext& context);
    void drawPoint(CDrawContext& context, std::size_t index);

    CUIParam* params_[2] = {nullptr, nullptr}; // x, y
    CUIParam* activeParam_ = nullptr;
    const CColorSwatch* swatch_ = nullptr;
    std::vector<Point> points_;
    std::array<FramePiece, kFramePieces> slider_[kSliderParts];

    std::size_t hovered_ = kNone;
    std::size_t held_ = kNone;
    CPoint lastPoint_;
    double dragNorm_[2] = {0.0, 0.0};

    // Bound attributes.
    CString swatchPath_;
    std::optional<CString> maxX_;
    std::optional<CString> maxY_;
};

} // namespace qel
