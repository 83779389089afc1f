// Colours by number.
#pragma once

#include "CObject.h"

#include <map>

namespace qel {

// Tag `ui:color-swatch`. Its children with "is-color" say which palette colour ("color") a number ("index")
// stands for; of two with one index the later one counts.
class CColorSwatch : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info) { CObject::buildClassInfo(info); }

    CError initChilds() override;

    // The palette name of a colour, or nothing.
    CString getColor(std::int32_t index) const;

private:
    std::map<std::int32_t, CString> colors_;
};

} // namespace qel
