// The link between the three forms of a parameter value.
#pragma once

#include "CObject.h"

#include <cstdint>

namespace qel {

class CAudioParamData;
class CAudioParamInfo;

// How positions from 0 to 1 and the values of one range go together, with all that can be worked out of the
// range beforehand. A plain value.
class CAudioParamCurve
{
public:
    enum class ELaw : std::uint8_t
    {
        kLinear,
        kWhole,   // linear, and positions snap to whole numbers
        kSquared, // more room for the lower part of the range
        kLog      // equal steps of position are equal factors of value; for ranges that do not touch zero
    };

    CAudioParamCurve() = default;
    CAudioParamCurve(ELaw law, double min, double max);

    // Whether positions move to the nearest of a few.
    bool snaps() const { return law_ == ELaw::kWhole; }
    double valueAt(double norm) const;
    double normOf(double value) const;

private:
    ELaw law_ = ELaw::kLinear;
    double min_ = 0.0;
    double span_ = 1.0; // of the values, or of their logarithms
    double logMin_ = 0.0;
};

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
    // Between the element's minimum and maximum in this order.
    double normToValue(const CAudioParamInfo& info, std::int32_t element, double norm) const
    {
        return curve(info, element).valueAt(norm);
    }
    double valueToNorm(const CAudioParamInfo& info, std::int32_t element, double value) const
    {
        return curve(info, element).normOf(value);
    }
    // Both, for whoever converts often.
    CAudioParamCurve curve(const CAudioParamInfo& info, std::int32_t element) const
    {
        return {law(), minOf(info, element), maxOf(info, element)};
    }

    // The unit, which the display adds behind the text; may be empty.
    const CString& getLabel() const { return label_; }

protected:
    using ELaw = CAudioParamCurve::ELaw;

    virtual ELaw law() const { return ELaw::kLinear; }

    static double minOf(const CAudioParamInfo& info, std::int32_t element);
    static double maxOf(const CAudioParamInfo& info, std::int32_t element);

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
