// The values of a parameter as one line of text.
#pragma once

#include "CAudioParamInfo.h"
#include "CAudioParamStorage.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace qel::tools {

// Why a text is not the values of a parameter.
class CValueError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Text in the units that users see, as exact as the values themselves: what format() writes, parse() reads
// back to the last bit.
//
//   "*" stands between the elements of an entry, "," between entries, ";" between groups. A group without
//   entries is empty text.
//   A number is what the parameter's converter takes, with or without its unit: "+6.5 dB", "109.4 Hz". A
//   state may go by its name. "=" and a real value is for values that no such text gives.
//   Of a string, "\" takes the meaning from a separator or backslash behind it; "\e" is the empty string.
//
// Works from a declaration, or from a format alone, where numbers are real values without "=". The
// declaration must outlive it.
class CValueText
{
public:
    explicit CValueText(const CAudioParamInfo& info);
    CValueText(std::int32_t esize, std::int32_t dtype) : esize_(esize), dtype_(dtype) {}

    // Throws CValueError for what does not parse or lies outside the range of the parameter.
    CAudioParamStorage parse(std::string_view text) const;
    // `values` has the format.
    std::string format(const CAudioParamStorage& values) const;

private:
    void parseGroup(std::string_view text, std::int32_t group, CAudioParamStorage& values) const;
    double parseNumber(std::string_view text, std::int32_t element) const;
    double parseDisplay(std::string_view text, std::int32_t element) const;
    void requireInRange(double value, std::string_view text, std::int32_t element) const;
    double converted(const std::string& text, std::int32_t element, bool& ok) const;

    std::string formatNumber(double value, std::int32_t element) const;
    // Both empty if there is no such text.
    std::string formatState(double value, std::int32_t element) const;
    std::string formatDisplay(double value, std::int32_t element) const;
    std::string labelOf(std::int32_t element) const;

    const CAudioParamInfo* info_ = nullptr;
    std::int32_t esize_ = 1;
    std::int32_t dtype_ = 0;
};

} // namespace qel::tools
