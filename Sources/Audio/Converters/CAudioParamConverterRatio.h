// Compression ratios "a:b".
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// The value is the reciprocal of the ratio, so "4:1" is 0.25: the slope of the curve above the threshold.
// "1:1" becomes 0.999, since a slope of 1 would leave nothing to compute. Unusable text gives 0.5 where no
// range is applied. Positions follow the logarithm of the ratio: equal steps multiply it by equal factors,
// which gives the musical ratios up to 10:1 most of the way. Stateless after init, for any thread.
class CAudioParamConverterRatio : public CAudioParamConverter
{
public:
    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

protected:
    ELaw law() const override { return ELaw::kLog; }
};

} // namespace qel
