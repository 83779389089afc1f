// Where a preset stands among the banks.
#include "CPresetPlace.h"

#include "CPresetLibrary.h"

#include <algorithm>

namespace qel {

namespace {

std::int32_t locate(const std::vector<CString>& names, std::int32_t index, const CString& name)
{
    const auto count = static_cast<std::int32_t>(names.size());
    if (index < 0 || (index < count && names[static_cast<std::size_t>(index)] == name)) {
        return index;
    }
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? std::min(index, count - 1)
                                : static_cast<std::int32_t>(found - names.begin());
}

} // namespace

void CPresetPlace::locateIn(const CPresetLibrary& library)
{
    bank = locate(library.listNames(), bank, bankName);
    const CPresetLibrary::Bank* const found = library.findBank(bank);
    preset = found ? locate(found->presets, preset, presetName) : -1;
}

} // namespace qel
