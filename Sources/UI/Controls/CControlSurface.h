// The plane on which points are dragged.
#pragma once

#include "CFilterResponse.h"
#include "CUIParamUpdateHandler.h"
#include "CView.h"

namespace qel {

// Tag `ui:control-surface`. Draws what the points of its groups (CControlSurfaceGroup, which lie over it)
// mean: the response of a filter, over a grid. Frequencies lie as the parameter of the corner has them, from
// end to end of the inside of the inner border.
//
//     filters           path of the array of filters whose response is shown
//     min-db, max-db    what is seen of the response, -48 and 6 by default
//     step-db           distance of the lines across, 12 by default
//
// Children: the ui-params "ui-param-freq", the corner, and "ui-param-type", the place in the array. Both may
// be missing: then there is only the grid. Draws with the thin brush of "brush-set"; slot 0 is the grid,
// slot 1 the curve.
class CControlSurface : public CView, public CUIParamUpdateHandler
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError attrInnerBorder() override;

    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

    void draw(CDrawContext& context) override;

protected:
    void updateClips() override;

private:
    CError attrLook();
    void layOut();
    double toPixelY(double db) const;
    double frequencyAt(double norm) const;

    CFilterResponse response_;
    CUIParam* freq_ = nullptr;
    CUIParam* type_ = nullptr;
    std::vector<CPoint> curve_;       // from the view's corner
    std::vector<double> gridAcross_;  // heights of lines
    std::vector<double> gridUpright_; // places of lines

    // Bound attributes.
    CString filtersPath_;
    double minDb_ = 0.0;
    double maxDb_ = 0.0;
    double stepDb_ = 0.0;
};

} // namespace qel
