// The switch between two settings.
#pragma once

#include "CButton.h"

namespace qel {

// Tag `ui:button-ab`. A button that is on for B: then it has the state "b-state" instead of "active", and the
// title "[B]B[/B]" instead of "[B]A[/B]". Bound to nothing, each click turns it round.
class CButtonAB : public CButton
{
public:
    static void buildClassInfo(CClassInfo& info) { CButton::buildClassInfo(info); }

    CError initChilds() override;

protected:
    CError onClick(const CAttrMap& parameters) override;
    CError showActive() override;
};

} // namespace qel
