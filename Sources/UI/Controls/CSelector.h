// A row of buttons, one of which is on.
#pragma once

#include "CView.h"

namespace qel {

// The base of the selectors. Makes its buttons when it comes up, and anew for another title list or on the
// event "rebuild-buttons".
//
//     button-count             how many; without it as many as there are titles
//     button-title-list        titles, with "separator-char" (";" by default) in between; without them a
//                              button's number, counted from 1
//     button-tag               "ui:button" by default
//     button-width, button-height, button-color, button-inner-border
//                              attributes of the buttons, which stand side by side ("placement" "left")
//     active-button            number of the button that is on; -1 (default) for none
//     is-right-click-allowed   the right button acts, too
//
// A click runs the event "button-released" of the selector, with "index" and the parameters of the click.
class CSelector : public CView
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;
    void onChildRemoved(CObject& child) override;

    virtual CError eventButtonReleased(const CAttrMap& parameters);
    virtual CError eventRebuildButtons(const CAttrMap& parameters);

    std::int32_t getButtonCount() const { return static_cast<std::int32_t>(buttons_.size()); }

protected:
    // A button has been clicked, with the right one if so.
    virtual CError onButton(std::int32_t index, bool isRight) = 0;
    // Shows what is the case now; the buttons are there.
    virtual CError updateActive() = 0;
    // How many buttons there are to be, and what makes each different from the others.
    virtual CError countButtons(std::int32_t& out);
    virtual void describeButton(std::int32_t index, CAttrMap& attributes);

    CError setActiveButton(std::int32_t index);
    // Null for a number without a button.
    CView* getButton(std::int32_t index) const;
    bool isUp() const { return isUp_ && !isReleased(); }

private:
    CError attrTitles();
    CError attrActiveButton();
    CError makeButton(std::int32_t index);

    std::vector<CView*> buttons_;
    std::vector<CString> titles_;
    bool isUp_ = false;

    // Bound attributes.
    std::int32_t count_ = -1;
    CString titleList_;
    CString separator_;
    CString tag_;
    std::int32_t active_ = -1;
    bool isRightClickAllowed_ = false;
};

} // namespace qel
