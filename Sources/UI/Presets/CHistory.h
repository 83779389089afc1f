// Undo, redo, and the list of steps.
#pragma once

#include "CAudioInterfaceClient.h"
#include "CView.h"

namespace qel {

class CValueList;

// Tag `ui:history`.
//
//     interface-client   path of the client of the audio/UI interface
//     step-hint          hint of the child "button-select", with %1 for the step that was made last
//
// Children: the views "button-undo" and "button-redo", which are disabled where there is nothing to undo or
// redo; "button-select" (ui:button-base), whose title is the step that was made last and which opens the list
// of steps; and "history-list" (ui:value-list-manual), which holds them. Clicks are linked to the history
// here: the tree need not.
//
// Events that it takes: "undo-clicked", "redo-clicked", "step-selected" with "index", and "history-change",
// which shows the present state. Every change of the history comes with the events of the client.
class CHistory : public CView
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;

private:
    CError onUndo(const CAttrMap& parameters);
    CError onRedo(const CAttrMap& parameters);
    CError onStepSelected(const CAttrMap& parameters);
    CError onHistoryChange(const CAttrMap& parameters);
    CError moveTo(std::int32_t position);

    CAudioInterfaceClient* client_ = nullptr;
    CViewBaseCtlEvents* undo_ = nullptr;
    CViewBaseCtlEvents* redo_ = nullptr;
    CViewBaseCtlEvents* select_ = nullptr;
    CValueList* list_ = nullptr;

    // Bound attributes.
    CString clientPath_;
    CString stepHint_;
};

} // namespace qel
