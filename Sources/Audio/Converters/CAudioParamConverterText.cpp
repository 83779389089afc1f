// Strings.
#include "CAudioParamConverterText.h"

#include "CAudioParamData.h"

namespace qel {

double CAudioParamConverterText::textToValueClamped(const CAudioParamInfo& info, std::int32_t element,
                                                    const CString& text, bool* ok) const
{
    return textToValue(info, element, text, ok);
}

double CAudioParamConverterText::textToValue(const CAudioParamInfo&, std::int32_t, const CString&,
                                             bool* ok) const
{
    setFlag(ok, true);
    return 0.0;
}

CString CAudioParamConverterText::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                              const CAudioParamData* pool, TextMode) const
{
    return pool ? pool->getString(value) : CString();
}

} // namespace qel
