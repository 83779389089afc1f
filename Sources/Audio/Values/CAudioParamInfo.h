// The declaration of a parameter.
#pragma once

#include "CAudioParamData.h"
#include "CError.h"
#include "Streams/CInputStream.h"
#include "Streams/COutputStream.h"

#include <vector>

namespace qel {

class CAudioParamConverter;

// What a parameter is: shape and meaning of its values, names, converters, range and defaults. A plain value
// that is copied freely; the converters belong to the shared tree, which outlives every copy.
//
// A value is addressed as values[group][entry * esize + element]. The numbers of a string parameter are
// identifiers of a pool. Minimum, maximum and defaults are real values, as modules receive them; a maximum
// below the minimum is an inverted range.
//
// Filled by CAudioParamDef from the tree, or by load() on the other side of the audio/UI boundary. After a
// failed parse function it is of no use.
class CAudioParamInfo
{
public:
    static constexpr std::int32_t kTypeFloat = 0;
    static constexpr std::int32_t kTypeString = 1;
    // Largest pool identifier that a string parameter promises to hold.
    static constexpr double kMaxStringId = 8388608.0;

    // Looks up the first `esize` names of `converterNames` and drops the rest. "/path" starts at the root of
    // the shared tree, any other name is one of `audio.paramcvt`.
    CError parseConverterNames();
    // Sets the range from blank-separated texts in display units, one per element. A string parameter has a
    // fixed range and ignores them. The converters must be there.
    CError convertMinMaxValues(const CString& minText, const CString& maxText);
    // Sets the defaults from display text: "*" ends an element, "," an entry, ";" a group. The converters
    // and the range must be there.
    CError parseDefValues(const CString& text);

    // Wire form. Loading needs the same converters in the shared tree as saving had; on failure nothing
    // changes.
    CError load(CInputStream& stream);
    CError save(COutputStream& stream) const;

    bool isString() const { return dtype == kTypeString; }
    bool hasSameFormat(const CAudioParamInfo& other) const
    {
        return esize == other.esize && dtype == other.dtype && reserved == other.reserved;
    }

    bool valid = false; // set when all of it is there
    std::int32_t esize = 1;
    std::int32_t dtype = kTypeFloat;
    std::int32_t reserved = 0;  // third number of the format, always 0
    bool isGlobal = false;      // exists by name, for the UI, the host, presets and other modules
    bool isStorable = false;    // belongs to presets
    bool isPersistent = false;  // belongs to the instance: saved by the host, in no preset
    bool isDiscrete = false;    // moves in whole steps
    bool isSingleGroup = false; // one set of values for the instance, in group 0
    CString visualName;
    CString name;
    CString paramRegistry;
    std::vector<CString> converterNames;                 // per element
    std::vector<const CAudioParamConverter*> converters; // per element
    std::vector<double> minValues;                       // per element
    std::vector<double> maxValues;                       // per element
    CAudioParamData pool;                                // strings of the defaults
    std::vector<std::vector<double>> defaults;           // per group

private:
    void convertRange(const std::vector<CString>& words, std::vector<double>& values);
    bool convertDefault(const CString& item, std::int32_t element, double& value);
    CError loadHead(CInputStream& stream);
    CError loadElements(CInputStream& stream);
    CError loadDefaults(CInputStream& stream);
    CError loadGroup(CInputStream& stream, std::vector<double>& group);
    CError saveHead(COutputStream& stream) const;
    CError saveDefaults(COutputStream& stream) const;
};

} // namespace qel
