// Presets that the user has stored for all instances.
#pragma once

#include "CAudioPresetBank.h"

namespace qel {

class CApplicationData;
class CBridge;

// All of them work on application data, which may block; what is damaged is traced and counts as missing. A
// name of a list that begins with "/" is one of the global store, any other of the local one. Control
// threads.

// The setting that holds a list, or null without an application or a name.
CApplicationData* findListStore(const CString& storeName, CString& outSetting);

// The user's own initial state, if it was stored by a registry with this `id`: any registry's presets could
// lie there. Otherwise `out` stays.
bool loadStoredDefault(const CString& id, CAudioPreset& out);
CError saveStoredDefault(const CAudioPreset& preset);
// The name of the setting that holds it, in the local store.
constexpr const char* kDefaultPresetSetting = "default-preset";

// The presets of a list; of the first bank in a list of banks. Otherwise `out` stays.
void loadStoredList(const CString& storeName, CAudioPresetBank& out);
// A list of banks. One bank alone is stored as what loadStoredList() reads.
void loadStoredBanks(const CString& storeName, std::vector<CAudioPresetBank>& out);
// All that follow the setting are told but `sender`.
CError saveStoredBanks(const CString& storeName, const std::vector<CAudioPresetBank>& banks, CBridge* sender);

} // namespace qel
