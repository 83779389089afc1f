// Times, shown in display units of `scale` seconds.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// With the default scale of 0.001 the text is in ms and the value in seconds. Short times get more decimals
// than long ones; `is-exact` keeps the most for all of them, `is-precise` adds one. Positions are squared,
// which gives short times more room; `is-log` makes them logarithmic, otherwise `is-exact` makes them linear.
// Stateless after init, for any thread.
class CAudioParamConverterTime : public CAudioParamConverter
{
public:
    static void buildClassInfo(CClassInfo& info);

    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

protected:
    ELaw law() const override { return isLog_ ? ELaw::kLog : isExact_ ? ELaw::kLinear : ELaw::kSquared; }

private:
    double scale_ = 0.001;
    bool isLog_ = false;
    bool isExact_ = false;
    bool isPrecise_ = false;
};

} // namespace qel
