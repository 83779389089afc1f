// One state of a view.
#pragma once

#include "CObject.h"

namespace qel {

class CViewBaseState;

// Tag `ui:view-state`, a child of a view. Its attributes, but for its name and "state-name", are those that
// the view has while the state "state-name" is active; CViewBaseState says how they join what was there.
class CViewState : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails if the parent is no view.
    CError init() override;
    CError applyAttrs() override;
    void release() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;
    // "{}" is kept for the value that the view has when the state comes.
    CString getPresentValue(const CString& key) const override;

    const CString& getStateName() const { return stateName_; }

    // True for what a state says about itself.
    static bool isOwnAttribute(const CString& key);
    // `text` of an attribute of a state with `value` in each place of a "{}".
    static CString fillPlaceholder(const CString& text, const CString& value);

private:
    CViewBaseState* view_ = nullptr; // from the time when it knows this state

    // Bound attributes.
    CString stateName_;
};

} // namespace qel
