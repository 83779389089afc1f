// Links from the events of views that a tree has laid out to the object that knows what they mean.
#pragma once

#include "CViewBaseCtlEvents.h"

namespace qel {

// From now on `onEvent` of the view is also `runEvent` for the target, with its parameters and `more` of its
// own. As a tree would say it: the link is a command of the view and ends with it.
CError linkEvent(CViewBaseCtlEvents& view, const char* onEvent, const CObject& target, const char* runEvent,
                 const CAttrMap& more = {});

// The item that an event of a list is about ("index"), or else `fallback`.
std::int32_t eventIndex(const CAttrMap& parameters, std::int32_t fallback = -1);

// A view that says nothing to the pointer, and looks like it.
CError setEnabled(CObject& view, bool isEnabled);

} // namespace qel
