// The children of an object, by place and by name.
#pragma once

#include "CInlineArray.h"
#include "CString.h"

#include <map>

namespace qel {

class CObject;

// Keeps children in the order in which they came, and finds them by name. Names with the same base are told
// apart by an index: "item" is index 0, "item#3" index 3. Children are not owned.
class CChildList
{
public:
    // Adds a child that would like this name, and returns the one it gets. The first user of a base name gets
    // the index it wants; later ones count on from there when theirs is taken.
    CString add(CObject& child, const CString& name);
    // `name` as add() returned it. False if the child is not in the list.
    bool remove(CObject& child, const CString& name);

    std::size_t size() const { return children_.size(); }
    CObject* operator[](std::size_t index) const { return children_[index]; }
    // In the order in which they came.
    const CInlineArray<CObject*, 8>& all() const { return children_; }
    bool contains(const CObject* child) const;

    // "name" (lowest index), "name#N" (exactly N), "name#+N" and "name#-N" (N places behind the lowest or
    // before the highest index); null if there is none.
    CObject* find(const CString& segment) const;

    // "item#3" without its index.
    static CString baseOf(const CString& name);

private:
    using Numbered = std::map<std::int32_t, CObject*>;

    std::int32_t takeIndex(const CString& baseName, std::int32_t wanted);
    static CObject* childAt(const Numbered& children, const CString& position);

    CInlineArray<CObject*, 8> children_;
    CStringMap<Numbered> numbered_;
    CStringMap<std::int32_t> counters_;
};

} // namespace qel
