// Fractions, shown in per cent.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// The value 1.0 reads "100.0". Positions are linear. Stateless after init, for any thread.
class CAudioParamConverterPercent : public CAudioParamConverter
{
public:
    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;
};

} // namespace qel
