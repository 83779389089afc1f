// Bandwidths in octaves.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// Always two decimals; positions are squared, which gives narrow bands more room. Unusable text gives 0.001
// octaves, a bandwidth that is legal everywhere, where no range is applied. Stateless after init, for any
// thread.
class CAudioParamConverterBW : public CAudioParamConverter
{
public:
    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

protected:
    ELaw law() const override { return ELaw::kSquared; }
};

} // namespace qel
