// Plain numbers.
#pragma once

#include "CAudioParamConverter.h"

namespace qel {

// The value is the number as typed, shown with a fixed number of decimals (none in compact text). Positions
// are linear. Stateless after init, for any thread.
class CAudioParamConverterReal : public CAudioParamConverter
{
public:
    static void buildClassInfo(CClassInfo& info);

    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

private:
    CError attrDecimals();

    std::int32_t decimals_ = 7;
};

} // namespace qel
