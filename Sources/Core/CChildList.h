// The children of an object, by place and by name.
#pragma once

#include "CInlineArray.h"
#include "CString.h"

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
    struct Numbered
    {
        std::int32_t index;
        CObject* child;
    };
    // The children of one base name, nearly always one, by rising index.
    struct Family
    {
        std::int32_t counter; // the index that was tried last
        CInlineArray<Numbered, 1> members = {};

        std::size_t placeOf(std::int32_t index) const;
        CObject* find(std::int32_t index) const;
        CObject* findAt(const CString& position) const;
    };

    CInlineArray<CObject*, 8> children_;
    CStringMap<Family> families_;
};

} // namespace qel
