// The push button, the switch and the button that opens a list.
#pragma once

#include "CFramedView.h"
#include "CUIParamUpdateHandler.h"
#include "SharedTarget.h"

namespace qel {

// Tag `ui:button-base`. Fires "mouse-press", "mouse-release" and so on for its commands, as every view; a
// release on the button first sets what the button is bound to, in this order of preference:
//
//     a child "ui-param-activity" (ui:ui-param)   gets 1 or 0, as a gesture of its own
//     shared-attribute, attribute                 path of an object and the name of its attribute, which
//                                                 becomes "true" or "false"
//
// The button shows what came back. Without either it is a plain button, and others may set "is-active".
//
//     is-active                switched on: state "active"
//     is-inverse               on for 0 and "false", off for all else
//     is-temp-pushed           held down by somebody else: state "temp-pushed"
//     is-right-click-allowed   the right button acts, too: "mouse-release-r"
//     is-undo-disabled         what it sets is no step of the history
//     is-picture               shows image "image-set-index" of the present range, placed by
//                              "pic-alignment-h", "pic-alignment-v" (both "center"); otherwise the eight
//                              pieces of a frame (FramePieces.h)
//     item-list                path of a list (CDynamicList) that a click opens, in place of what is above.
//                              The choice ends in "selected-item" (text) and "index"
//
// A child "ui-param-value" (ui:ui-param) is set by the choice, and its text is kept in "title", which a
// template's label follows; without "item-list" all values of its parameter are offered. The list is opened
// by "popup-toggle" of `ui:window-app-popup-list`, whose attributes are "item-list", "selected-paragraph" and
// those of the button that begin with "popup-"; "window-alignment" ("bottom") and "is-same-width" (true) may
// be given on the button.
//
// States: "pushed" while a button of the mouse is held and the pointer is on the view; "hover"; "active";
// "temp-pushed"; "error" from outside.
class CButton : public CFramedView, public CUIParamUpdateHandler
{
public:
    static constexpr const char* kActivityParam = "ui-param-activity";
    static constexpr const char* kValueParam = "ui-param-value";

    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    // --- pointer
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMousePressR(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;
    CError onMouseCancelR(const CAttrMap& parameters) override;
    CError onMouseEnter(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;

    CError eventPopupResult(const CAttrMap& parameters) override;

    // --- parameters
    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

    bool isActive() const { return isActive_; }

    void draw(CDrawContext& context) override;

protected:
    // A click has been made; the button is not disabled. Called before the commands for the release.
    virtual CError onClick(const CAttrMap& parameters);
    // "is-active" is another one: the button shows it.
    virtual CError showActive();
    // True if a click sets something.
    bool isBound() const { return activity_ || shared_.isThere(); }
    void onLookChanged() override;

private:
    CError attrIsActive() { return showActive(); }
    CError attrIsTempPushed();
    CError attrPicture();
    void adoptPicture();
    CError press();
    CError finish(const CAttrMap& parameters, bool isClick);
    CError toggle();
    CError findList(CObject*& out);
    CError openList(const CAttrMap& parameters);
    CError followShared();

    CUIParam* activity_ = nullptr;
    CUIParam* value_ = nullptr;
    SharedTarget shared_;
    bool isHeld_ = false; // by a button of the mouse
    CAlignment alignmentH_ = CAlignment::kCenter;
    CAlignment alignmentV_ = CAlignment::kCenter;

    // Bound attributes.
    bool isActive_ = false;
    bool isInverse_ = false;
    bool isTempPushed_ = false;
    bool isRightClickAllowed_ = false;
    bool isUndoDisabled_ = false;
    bool isPicture_ = false;
    CString pictureAlignmentH_;
    CString pictureAlignmentV_;
    std::int32_t imageIndex_ = 0;
    CString itemList_;
    CString sharedAttribute_;
    CString attribute_;
};

} // namespace qel
