// The path language by which the nodes of a tree find each other.
#pragma once

#include "CString.h"

#include <vector>

namespace qel {

class CObject;

// A path, split into its steps. Segments stand between "."; "^" is the parent, "/" the root, "$name" the text
// of an attribute of the object reached so far, which may hold steps itself; "shared::" at the front begins
// at the shared tree. A path that begins with none of ".", "^", "$" begins at the root. Text that runs into
// one of "/", "^" and "$" is dropped.
class CObjectPath
{
public:
    explicit CObjectPath(const CString& path);

    // The object that the path leads to from `from`, or null.
    CObject* findFrom(CObject& from) const;
    // The full name of that object, or the one that it would have, when only the steps to its nearest
    // existing parent can be walked. A path that tells no name (positions such as "row#+1" among children
    // that are not there) comes back as it is.
    CString nameFrom(CObject& from) const;

private:
    struct Step
    {
        enum class Kind
        {
            kRoot,
            kParent,
            kChild,
            kVariable,
            kHere // a ".": where it ends a path, that leads to the object reached
        };
        Kind kind;
        CString text;
    };
    using Steps = std::vector<Step>;

    // Where a walk has come to: an object, or the full name of one that is not there.
    struct Place
    {
        CObject* object = nullptr;
        CString missingName;
        bool isNamed = false;    // missingName counts
        bool isComplete = false; // a path may end here
    };

    static Steps split(const CString& path, std::size_t start);
    static void step(const Step& step, Place& place);
    Place walk(CObject& from) const;

    CString path_;
};

} // namespace qel
