// Linear gain factors, shown in dB.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// The value is the factor, its text the level in dB, and equal steps of position are equal steps in dB. A
// factor of 0 is no legal gain: it has no text of its own and reads as the minimum. Declares for the control
// where unity and "off" are drawn; neither enters a conversion. Stateless after init, for any thread.
class CAudioParamConverterGain : public CAudioParamConverter
{
public:
    static void buildClassInfo(CClassInfo& info);

    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

    // Position of the zero mark, 0 to 1.
    double getZeroPoint() const { return zeroPoint_; }
    // Position of "off" in whole per cent; -100 means there is none.
    std::int32_t getOffPointPercent() const { return offPointPercent_; }

protected:
    ELaw law() const override { return ELaw::kLog; }

private:
    CError attrDecimals();
    CError attrZeroPoint();
    CError attrOffPoint();

    std::int32_t decimals_ = 1;
    double zeroPoint_ = 0.5;
    double offPoint_ = -1.0;
    std::int32_t offPointPercent_ = -100;
};

} // namespace qel
