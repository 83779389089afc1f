// A line that moves to show its ends.
#pragma once

#include "CTextView.h"

namespace qel {

// Tag `ui:textview-auto-scroll`, and the base of views that may have long lines. The children
// ".auto-scroll-arrow-left" and ".auto-scroll-arrow-right" are shown where the text goes on beyond the view.
// While the pointer is on the view, the text moves in the direction of the half that it is on, until its end
// is seen; when the pointer leaves, the text is back at its begin. How far it has moved is "offset-x", as a
// part of its width.
//
//     auto-scroll-fps        steps a second, 30 by default
//     auto-scroll-speed      pixels a second at a scale of 1, 60 by default
class CTextViewAutoScroll : public CTextView
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails without the arrows.
    CError initChilds() override;

    CError onMouseEnter(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMouseMove(const CAttrMap& parameters) override;

protected:
    bool isShortening() const override { return false; }
    double getTextShiftX() const override;
    void onTextLaidOut() override;

private:
    CError eventTick(const CAttrMap& parameters);
    // The offset at which the end is seen; 0 for a text that fits.
    double mostOffset() const;
    CError setOffset(double offset);
    void startTimer();
    void stopTimer();
    void showArrows();

    CView* arrowLeft_ = nullptr;
    CView* arrowRight_ = nullptr;
    bool isPointedAt_ = false;
    bool isForward_ = true;

    // Bound attributes.
    double fps_ = 0.0;
    double speed_ = 0.0;
};

} // namespace qel
