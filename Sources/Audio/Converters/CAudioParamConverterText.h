// Strings.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// The value is the identifier of a string in a pool. Text never becomes a value here, since it has to enter a
// pool first: whoever writes a string parameter does that. Stateless after init, for any thread.
class CAudioParamConverterText : public CAudioParamConverter
{
public:
    double textToValueClamped(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                              bool* ok) const override;
    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;
};

} // namespace qel
