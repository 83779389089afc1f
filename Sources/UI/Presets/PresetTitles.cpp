// Names of presets and banks.
#include "PresetTitles.h"

#include <algorithm>

namespace qel {

CString fileNameOf(const CString& name)
{
    const CString refused("\\/:*?\"<>|");
    CString file;
    for (std::size_t i = 0; i < name.length(); ++i) {
        const char16_t c = name[i];
        file += c < 0x20 || refused.find(c) != CString::kNone ? u'_' : c;
    }
    return file;
}

CString uniqueName(const CString& name, const std::vector<CString>& taken)
{
    const auto isTaken = [&](const CString& one) {
        return std::find(taken.begin(), taken.end(), one) != taken.end();
    };
    CString unique = name;
    for (int number = 2; isTaken(unique); ++number) {
        unique = name + CString(" ") + CString::number(number);
    }
    return unique;
}

} // namespace qel
