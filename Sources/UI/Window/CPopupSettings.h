// What an opener says of the pop-up that it opens.
#pragma once

#include "CAttrValue.h"
#include "CDrawContext.h"
#include "CError.h"
#include "CWindowPlacement.h"

namespace qel {

class CView;

// The parameters of "popup-toggle", each by its own name or, as openers have it among their attributes, with
// "popup-" in front. CPopups says what there is. A plain value; the tree's thread.
class CPopupSettings
{
public:
    explicit CPopupSettings(CAttrMap values = {}) : values_(std::move(values)) {}

    // From all places: attributes of the opener, those of an object that it names, the event's own; the later
    // ones win. Fails without the object named.
    CError gather(CView& opener, const CAttrMap& parameters);

    bool getFlag(const char* name) const;
    double getNumber(const char* name, double fallback) const;
    CString getText(const char* name) const;

    // With what the root view of the pop-up is made.
    CAttrMap makeRootAttributes(const CView& opener) const;
    // Where a pop-up of `opener` is wanted, whose window lies at `openerWindow`, with the pointer at
    // `pointer` in it.
    CWindowPlacement makePlacement(const CView& opener, const platform::PixelRect& openerWindow,
                                   const CPoint& pointer) const;

private:
    const CAttrValue* find(const char* name) const;

    CAttrMap values_;
};

} // namespace qel
