// One write to a parameter, on any of the ways it can take.
#pragma once

#include <cstdint>

namespace qel {

class CAudioParamData;

// Says which entries of which group become what. The record owns nothing: `values` and `pool` must stay valid
// for the call it is given to. Entries may lie behind the end of the group; see
// CAudioParamStorage::write().
struct CAudioParamChange
{
    // As `group`: the parameter is replaced as a whole. All groups and strings go; values that come with it
    // become group 0.
    static constexpr std::int32_t kWholeParam = 9999;

    std::int32_t group = 0;
    std::int32_t start = 0; // first entry
    std::int32_t count = 0; // entries
    bool resize = false; // the group ends behind the written entries, rather than keeping what it had there
    double time = 0.0;   // seconds; from the start of the processing call until the audio side dates it
    std::int32_t esize = 1; // format of the values; must be that of the parameter
    std::int32_t dtype = 0;
    std::int32_t reserved = 0;
    const double* values = nullptr;        // count * esize numbers
    const CAudioParamData* pool = nullptr; // what the identifiers among the values of a string parameter mean

    bool isWhole() const { return group == kWholeParam; }
    std::int32_t end() const { return start + count; }
    // True if a slot that sees `group` and `entry` (-1: any) is concerned.
    bool touches(std::int32_t wantedGroup, std::int32_t wantedEntry) const
    {
        if (isWhole()) {
            return true;
        }
        return (wantedGroup < 0 || wantedGroup == group) &&
               (wantedEntry < 0 || (wantedEntry >= start && (resize || wantedEntry < end())));
    }
};

} // namespace qel
