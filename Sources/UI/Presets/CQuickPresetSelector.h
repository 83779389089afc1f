// The button that shows the present preset and opens the list of all.
#pragma once

#include "CButton.h"

namespace qel {

class CAudioInterfaceClient;
class CDynamicListPresets;

// Tag `ui:quick-preset-selector`. A click opens the list, and what is chosen there is activated at once.
//
//     ui-param-title       name of the child (ui:ui-param) whose text is the preset's name; "ui-param-title"
//     forced-title         shown in place of the name: with "forced-title-filter" for the names listed there
//                          alone (";" in between), otherwise always, and no child is needed
//     preset-list          path of a `ui:dynamic-list-presets` that the left button opens; without it one is
//                          made from "interface-client", "param-registry", "store-name" and "is-global-data"
//     preset-list-user     the same for the right button; made where "store-name-user" is given
//     selected-list, selected-index
//                          where the last choice was made: the id of the list, and the place in it
//     selector-full-name   set here, to the full name of this object, for templates and pop-ups
//     settling-steps       names of the steps of the history (";" in between) that set everything as a preset
//                          has it
//     silent-steps         how the names of those begin that change nothing that a preset has
//     is-changed           set here, with "interface-client" and "settling-steps": true while the present
//                          step is another one than those
//
// Attributes of CButton hold, "popup-..." among them.
class CQuickPresetSelector : public CButton
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    // Fails where the name is to be shown and nothing holds it.
    CError initChilds() override;

    CError eventPopupResult(const CAttrMap& parameters) override;
    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;

    virtual CError eventHistoryChange(const CAttrMap& parameters);

protected:
    CError onClick(const CAttrMap& parameters) override;

private:
    CError findList(const CString& path, const CString& storeName, const char* name, CString& out);
    bool isTitleParam(const CUIParam& param) const;
    CError updateTitle();
    CError followHistory();

    CUIParam* name_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr; // whose history is followed
    CString presetListName_;                  // in full
    CString userListName_;

    // Bound attributes.
    CString clientPath_;
    CString registry_;
    CString storeName_;
    CString userStoreName_;
    bool isGlobalData_ = false;
    std::optional<CString> forcedTitle_;
    CString forcedTitleFilter_;
    CString presetListPath_;
    CString userListPath_;
    CString titleParam_;
    CString settlingSteps_;
    CString silentSteps_;
};

} // namespace qel
