// Presets that the user has stored for all instances.
#pragma once

#include "CAudioPresetBank.h"

namespace qel {

// Both read application data, which may block, and leave `out` alone where there is nothing of use; what is
// damaged is traced. Control threads.

// The user's own initial state, if it was stored by a registry with this `id`: any registry's presets could
// lie there.
bool loadStoredDefault(const CString& id, CAudioPreset& out);
// The presets of a list. A name that begins with "/" is one of the global store, any other of the local one.
void loadStoredList(const CString& storeName, CAudioPresetBank& out);

} // namespace qel
