// Where a preset stands among the banks.
#pragma once

#include "CString.h"

#include <cstdint>

namespace qel {

class CPresetLibrary;

// A bank, or a preset in it, by its index and by the name that it had: other instances change the same lists
// while a window is open.
struct CPresetPlace
{
    std::int32_t bank = -1;
    std::int32_t preset = -1; // -1: none of the bank
    CString bankName;
    CString presetName;

    // Takes the indices up to what the library has now: by name, at the index if that has another name now,
    // and otherwise at what has taken its place. The names stay.
    void locateIn(const CPresetLibrary& library);
    bool hasSameNames(const CPresetPlace& other) const
    {
        return bankName == other.bankName && presetName == other.presetName;
    }
};

} // namespace qel
