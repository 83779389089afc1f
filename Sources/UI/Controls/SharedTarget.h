// What "shared-attribute" of a control leads to.
#pragma once

#include "CObject.h"

namespace qel {

// An attribute of an object that several controls show and set, most often one that is kept as a setting.
struct SharedTarget
{
    CObject* object = nullptr; // null: there is none
    CString attribute;

    bool isThere() const { return object && !attribute.isEmpty(); }
    CString read() const { return object->getAttrString(attribute); }
    CError write(const CString& value) const { return object->setAttribute(attribute, value, true); }
};

// The path may lead to the object that has the attribute, or to the object that keeps the attribute as a
// setting; that one knows the attribute's name, which may be left out then.
SharedTarget findSharedTarget(CObject& from, const CString& path, const CString& attribute);

} // namespace qel
