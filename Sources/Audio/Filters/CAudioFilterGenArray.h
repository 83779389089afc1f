// Filter generators by number.
#pragma once

#include "CAudioFilterGen.h"

#include <vector>

namespace qel {

// What a filter's `index` parameter chooses from. Items take the places that their `index` says, in any
// order. Complete once the tree is loaded and read-only from then on.
class CAudioFilterGenArray : public CObject
{
public:
    CError initChilds() override;

    // Null where no item has this index.
    const CAudioFilterGen* getGen(std::int32_t index) const
    {
        return index >= 0 && static_cast<std::size_t>(index) < generators_.size()
                   ? generators_[static_cast<std::size_t>(index)]
                   : nullptr;
    }
    // One more than the highest index.
    std::int32_t length() const { return static_cast<std::int32_t>(generators_.size()); }

private:
    friend class CAudioFilterGenArrayItem;

    // False if the place does not exist or is taken.
    bool place(std::int32_t index, const CAudioFilterGen& generator);

    std::vector<const CAudioFilterGen*> generators_;
};

// One place of an array: the generator at the path `fltgen`, under the number `index`.
class CAudioFilterGenArrayItem : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    // Enters the generator into `array`, which calls this when all its children are there.
    CError enterInto(CAudioFilterGenArray& array);

private:
    CString fltgen_;
    std::int32_t index_ = -1;
};

} // namespace qel
