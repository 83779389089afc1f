// The process-wide map from tag to class.
#pragma once

#include "CClassInfo.h"

namespace qel {

// One row of the table of tags (CreatorTable.cpp): how to make an object, and how its class declares itself.
struct CCreatorRow
{
    const char* tag; // null ends a table
    CObject* (*create)();
    void (*buildClassInfo)(CClassInfo& info);
};

template <class Class>
CObject* newObject()
{
    return new Class();
}

// Filled when the application starts and emptied when it ends; in between nothing changes it, so any thread
// may look tags up.

// Enters one class; fails if the tag is there already.
CError registerCreator(const CCreatorRow& row);
// Enters all rows up to the one without a tag.
CError registerCreators(const CCreatorRow* table);
// Makes an object of the tag's class with its class info set, or returns null if the tag is unknown.
CObject* createRegistered(const CString& tag);
// Forgets all tags and frees their class infos. No object may be left.
void clearCreators();

} // namespace qel
