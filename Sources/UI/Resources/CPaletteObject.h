// A palette of the tree, or the group of all palettes.
#pragma once

#include "CObject.h"
#include "CPalette.h"
#include "CSharedDataSet.h"

#include <vector>

namespace qel {

// Tag `palette`. With a "file" it is one palette; without, a group with one child for each palette that a
// user can choose, in the order of the tree. A file is loaded when a view first asks for it.
class CPaletteObject : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // This object's palette; share the pointer as long as its colours are used. Null without an error for a
    // group; null with one for a file that does not load.
    CError getPalette(std::shared_ptr<const CPalette>& out);
    // The palette of this name in a group, or null.
    CPaletteObject* findPalette(const CString& name) const;
    // The names of the palettes of a group.
    std::vector<CString> getPaletteNames() const;

private:
    CString file_;
    CSharedDataSet<CPalette> palette_;
};

} // namespace qel
