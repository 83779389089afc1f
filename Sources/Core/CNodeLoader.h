// Building nodes from the compiled form of a tree.
#pragma once

#include "CObject.h"

namespace qel {

class CNodeCursor;

// Reads compiled nodes onto objects. A node is: tag, name, template flag, then either
//
//     plain:    attribute count, (key, value) pairs, child count, children; or
//     template: content tag, body size, body (one node, kept undecoded until it is instantiated)
//
// Damaged data gives an error; what was made up to then stays for the caller to release. Tree's thread.
class CNodeLoader
{
public:
    explicit CNodeLoader(CNodeCursor& cursor) : cursor_(cursor) {}

    // As CObject::loadNode().
    CError load(CObject& object, bool fullInit, bool skipHead, bool skipAttributes, bool skipChildren);

    // The attributes of the template that `object` is an instance of, or else its children.
    static CError replayTemplate(CObject& object, bool attributes);

private:
    CError loadTemplateBody(CObject& holder);
    CError loadAttributes(CObject& object, bool skip);
    CError loadChildren(CObject& object);
    CError loadChild(CObject& parent);

    CNodeCursor& cursor_;
};

} // namespace qel
