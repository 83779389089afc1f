// The {...} references in attribute values.
#pragma once

#include "CError.h"
#include "CString.h"

namespace qel {

class CObject;

// Replaces the references in a value that is to be set as attribute `key` of `object`, the last brace first,
// so that an inner reference is expanded before the outer, and what a reference yields is expanded in its
// turn.
//
//     {}             the value that the attribute has here or inherits (CObject::getPresentValue())
//     {name}         the attribute of that name of the object or of the nearest parent that has one
//     {/path name}   an attribute of the object at a path
//     {*other name}  the same of a named object nearby ("other" may be "/path"), which is followed from now
//     on
//
// What leads nowhere is the empty text. A value that expands without end, or to more than a million
// characters, is an error. Tree's thread.
CError expandReferences(CObject& object, const CString& key, CString& value);

// What one reference, without its braces, stands for.
CString resolveReference(CObject& object, const CString& reference, const CString& key);

} // namespace qel
