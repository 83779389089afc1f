// The values of a parameter as one line of text.
#include "PresetCompiler/CValueText.h"

#include "CAudioParamConverterEnum.h"
#include "CAudioParamConverterGain.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

namespace qel::tools {

namespace {

// A double needs no more to be told from its neighbours.
constexpr int kMaxDecimals = 17;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kEmptyString = "\\e";

bool isSame(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(kBlanks);
    return start == text.npos ? std::string_view()
                              : text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

// At separators without a backslash before them; backslashes stay.
std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == separator) {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.substr(std::min(start, text.size())));
    return parts;
}

std::string escaped(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\\' || c == ';' || c == ',' || c == '*') {
            out += '\\';
        }
        out += c;
    }
    return out.empty() ? std::string(kEmptyString) : out;
}

std::string unescaped(std::string_view text)
{
    if (text == kEmptyString) {
        return {};
    }
    if (text.empty()) {
        throw CValueError("an empty string is written as \\e");
    }
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && ++i == text.size()) {
            throw CValueError("nothing behind the last backslash");
        }
        out += text[i];
    }
    return out;
}

std::string shortest(double value)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string decimal(double value, int decimals)
{
    char text[400];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return result.ec == std::errc() ? std::string(text, result.ptr) : std::string();
}

double realNumber(std::string_view text)
{
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        throw CValueError("'" + std::string(text) + "' is no number");
    }
    return value;
}

const CAudioParamConverterEnum* statesOf(const CAudioParamInfo& info, std::int32_t element)
{
    return dynamic_cast<const CAudioParamConverterEnum*>(info.converters[static_cast<std::size_t>(element)]);
}

// The value of the first state of this name.
std::optional<double> valueOfState(const CAudioParamInfo& info, std::int32_t element, std::string_view name)
{
    const CAudioParamConverterEnum* states = statesOf(info, element);
    for (std::size_t i = 0; states && i < states->stateCount(); ++i) {
        if (states->stateName(i).toUtf8() == name) {
            return std::round(info.minValues[static_cast<std::size_t>(element)]) + static_cast<double>(i);
        }
    }
    return std::nullopt;
}

} // namespace

CValueText::CValueText(const CAudioParamInfo& info) : info_(&info), esize_(info.esize), dtype_(info.dtype) {}

std::string CValueText::labelOf(std::int32_t element) const
{
    return info_->converters[static_cast<std::size_t>(element)]->getLabel().toUtf8();
}

// --- reading

CAudioParamStorage CValueText::parse(std::string_view text) const
{
    CAudioParamStorage values;
    values.format(esize_, dtype_);
    const auto groups = split(text, ';');
    for (std::size_t group = 0; group < groups.size(); ++group) {
        parseGroup(groups[group], static_cast<std::int32_t>(group), values);
    }
    return values;
}

void CValueText::parseGroup(std::string_view text, std::int32_t group, CAudioParamStorage& values) const
{
    std::vector<double> numbers;
    CAudioParamData pool;
    const auto entries = text.empty() ? std::vector<std::string_view>() : split(text, ',');
    for (const std::string_view entry : entries) {
        const auto elements = split(entry, '*');
        if (static_cast<std::int32_t>(elements.size()) != esize_) {
            throw CValueError("an entry has " + std::to_string(esize_) + " elements, not " +
                              std::to_string(elements.size()));
        }
        for (std::int32_t element = 0; element < esize_; ++element) {
            const std::string_view item = elements[static_cast<std::size_t>(element)];
            numbers.push_back(dtype_ == CAudioParamStorage::kString
                                  ? pool.addString(CString::fromUtf8(unescaped(item)))
                                  : parseNumber(trimmed(item), element));
        }
    }
    CAudioParamChange change;
    change.group = group;
    change.count = static_cast<std::int32_t>(entries.size());
    change.resize = true;
    change.esize = esize_;
    change.dtype = dtype_;
    change.values = numbers.data();
    change.pool = &pool;
    if (!values.write(change)) {
        throw CValueError("more groups or entries than a parameter can hold");
    }
}

double CValueText::parseNumber(std::string_view text, std::int32_t element) const
{
    if (!info_) {
        return realNumber(text);
    }
    const double value =
        text.starts_with('=') ? realNumber(trimmed(text.substr(1))) : parseDisplay(text, element);
    requireInRange(value, text, element);
    return value;
}

double CValueText::parseDisplay(std::string_view text, std::int32_t element) const
{
    if (const auto state = valueOfState(*info_, element, unescaped(text.empty() ? "\\e" : text))) {
        return *state;
    }
    std::string_view number = text;
    const std::string label = labelOf(element);
    if (!label.empty() && number.ends_with(label)) {
        number = trimmed(number.substr(0, number.size() - label.size()));
    }
    if (number.starts_with('+') && !number.starts_with("+-")) {
        number.remove_prefix(1);
    }
    bool ok = false;
    const double value = converted(std::string(number), element, ok);
    if (!ok) {
        throw CValueError("'" + std::string(text) + "' is no value of this parameter");
    }
    return value;
}

double CValueText::converted(const std::string& text, std::int32_t element, bool& ok) const
{
    const auto* converter = info_->converters[static_cast<std::size_t>(element)];
    return converter->textToValue(*info_, element, CString::fromUtf8(text), &ok);
}

void CValueText::requireInRange(double value, std::string_view text, std::int32_t element) const
{
    const double from = info_->minValues[static_cast<std::size_t>(element)];
    const double to = info_->maxValues[static_cast<std::size_t>(element)];
    if (!(value >= std::min(from, to) && value <= std::max(from, to))) {
        throw CValueError("'" + std::string(text) + "' is out of range, which is " +
                          formatNumber(from, element) + " to " + formatNumber(to, element));
    }
}

// --- writing

std::string CValueText::format(const CAudioParamStorage& values) const
{
    std::string text;
    for (std::int32_t group = 0; group < values.getGroupCount(); ++group) {
        text += group > 0 ? ";" : "";
        const auto numbers = values.getValues(group);
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const auto element = static_cast<std::int32_t>(i) % esize_;
            text += i == 0 ? "" : element > 0 ? "*" : ",";
            text += values.isString() ? escaped(values.getPool().getString(numbers[i]).toUtf8())
                                      : formatNumber(numbers[i], element);
        }
    }
    return text;
}

std::string CValueText::formatNumber(double value, std::int32_t element) const
{
    if (!info_) {
        return shortest(value);
    }
    std::string text = formatState(value, element);
    if (text.empty()) {
        text = formatDisplay(value, element);
    }
    return text.empty() ? "=" + shortest(value) : text;
}

std::string CValueText::formatState(double value, std::int32_t element) const
{
    const CAudioParamConverterEnum* states = statesOf(*info_, element);
    if (!states || states->stateCount() == 0) {
        return {};
    }
    const std::string name =
        states->valueToText(*info_, element, value, nullptr, CAudioParamConverter::TextMode::kNormal)
            .toUtf8();
    const auto meant = valueOfState(*info_, element, name);
    return meant && isSame(*meant, value) && trimmed(name) == name && !name.empty() ? escaped(name)
                                                                                    : std::string();
}

// The number with the fewest decimals that the converter takes back to this value.
std::string CValueText::formatDisplay(double value, std::int32_t element) const
{
    bool ok = false;
    const double one = converted("1", element, ok);
    const auto* converter = info_->converters[static_cast<std::size_t>(element)];
    const bool isGain = dynamic_cast<const CAudioParamConverterGain*>(converter) != nullptr;
    const double shown = isGain ? std::log(value) / std::log(one) : value / one;
    if (!ok || !std::isfinite(shown)) {
        return {};
    }
    for (int decimals = 0; decimals <= kMaxDecimals; ++decimals) {
        std::string text = decimal(shown, decimals);
        if (isSame(converted(text, element, ok), value) && ok && !valueOfState(*info_, element, text)) {
            const std::string label = labelOf(element);
            return (isGain && shown > 0.0 ? "+" : "") + text + (label.empty() ? "" : " " + label);
        }
    }
    return {};
}

} // namespace qel::tools
