// Frequencies in Hz.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// Shows three significant digits or so, with "k" for kHz from 1000 on, and takes the suffix "k" or "K" in
// typed text. Equal steps of position are equal intervals. Stateless after init, for any thread.
class CAudioParamConverterFreq : public CAudioParamConverter
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
