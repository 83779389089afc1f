// The link between the three forms of a parameter value.
#pragma once

#include "CObject.h"

#include <cstdint>

namespace qel {

class CAudioParamData;
class CAudioParamInfo;

// Stands between the real value that modules receive (a linear factor, Hz, seconds, a fraction), the
// normalised position 0 to 1 of knobs and hosts, and the text that users read and type. Ranges belong to the
// parameter: every call names its declaration and the element, which must be below its `esize`.
//
// Converters live in the shared tree and have no state once initialised, so any thread may call any
// conversion at any time. None of them fails: unusable text clears the flag, and a value outside the range
// simply continues the curve.
class CAudioParamConverter : public CObject
{
public:
    enum class TextMode : std::int32_t
    {
        kNormal = 0,
        kCompact = 1, // for narrow read-outs
        kShort = 2    // short names of states; otherwise as kNormal
    };

    static void buildClassInfo(CClassInfo& info);

    // The value of a text, limited to the range of the element. Unusable text gives the element's minimum and
    // sets `ok`, which may be null, to false.
    virtual double textToValueClamped(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                                      bool* ok) const;
    // The same without the limits.
    virtual double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                               bool* ok) const = 0;
    // The text without unit. `pool`, which may be null, holds the strings of a string parameter.
    virtual CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                                const CAudioParamData* pool, TextMode mode) const = 0;
    // Linear unless a class says otherwise, between the element's minimum and maximum in this order.
    virtual double normToValue(const CAudioParamInfo& info, std::int32_t element, double norm) const;
    virtual double valueToNorm(const CAudioParamInfo& info, std::int32_t element, double value) const;

    // The unit, which the display adds behind the text; may be empty.
    const CString& getLabel() const { return label_; }

protected:
    static double minOf(const CAudioParamInfo& info, std::int32_t element);
    static double maxOf(const CAudioParamInfo& info, std::int32_t element);

    // Equal steps of position are equal factors of value. For ranges that do not touch zero.
    static double logNormToValue(const CAudioParamInfo& info, std::int32_t element, double norm);
    static double logValueToNorm(const CAudioParamInfo& info, std::int32_t element, double value);
    // More room for the lower part of the range.
    static double squaredNormToValue(const CAudioParamInfo& info, std::int32_t element, double norm);
    static double squaredValueToNorm(const CAudioParamInfo& info, std::int32_t element, double value);

    static void setFlag(bool* ok, bool state)
    {
        if (ok) {
            *ok = state;
        }
    }

private:
    CString label_;
};

} // namespace qel
