// The value of an attribute: set in one form, read in any.
#include "CAttrValue.h"

#include "NumberSyntax.h"

#include <cmath>

namespace qel {

CAttrValue::CAttrValue(bool value) : cachedForms_(kBoolForm), kind_(Kind::kBool), bool_(value) {}

CAttrValue::CAttrValue(double value) : cachedForms_(kRealForm), kind_(Kind::kReal), real_(value) {}

CAttrValue::CAttrValue(std::int32_t value)
    : cachedForms_(kIntegerForm), kind_(Kind::kInteger), integer_(value)
{}

CAttrValue::CAttrValue(CString value)
    : cachedForms_(kStringForm), kind_(Kind::kString), string_(std::move(value))
{}

CAttrValue& CAttrValue::operator=(const CAttrValue& other)
{
    if (this != &other) {
        copyForms(other);
        string_ = other.string_;
    }
    return *this;
}

CAttrValue& CAttrValue::operator=(CAttrValue&& other) noexcept
{
    if (this != &other) {
        copyForms(other);
        string_ = std::move(other.string_);
    }
    return *this;
}

void CAttrValue::copyForms(const CAttrValue& other)
{
    cachedForms_ = other.cachedForms_.load(std::memory_order_acquire);
    kind_ = other.kind_;
    bool_ = other.bool_.load(std::memory_order_relaxed);
    integer_ = other.integer_.load(std::memory_order_relaxed);
    real_ = other.real_.load(std::memory_order_relaxed);
}

std::optional<bool> CAttrValue::toBool() const
{
    if (!has(kBoolForm)) {
        const std::optional<bool> converted = convertToBool();
        if (!converted) {
            return std::nullopt;
        }
        bool_.store(*converted, std::memory_order_relaxed);
        cachedForms_.fetch_or(kBoolForm, std::memory_order_release);
    }
    return bool_.load(std::memory_order_relaxed);
}

std::optional<double> CAttrValue::toReal() const
{
    if (!has(kRealForm)) {
        const std::optional<double> converted = convertToReal();
        if (!converted) {
            return std::nullopt;
        }
        real_.store(*converted, std::memory_order_relaxed);
        cachedForms_.fetch_or(kRealForm, std::memory_order_release);
    }
    return real_.load(std::memory_order_relaxed);
}

std::optional<std::int32_t> CAttrValue::toInteger() const
{
    if (!has(kIntegerForm)) {
        const std::optional<std::int32_t> converted = convertToInteger();
        if (!converted) {
            return std::nullopt;
        }
        integer_.store(*converted, std::memory_order_relaxed);
        cachedForms_.fetch_or(kIntegerForm, std::memory_order_release);
    }
    return integer_.load(std::memory_order_relaxed);
}

CString CAttrValue::toString() const
{
    switch (kind_) {
    case Kind::kBool:
        return bool_.load(std::memory_order_relaxed) ? "true" : "false";
    case Kind::kReal:
        return formatReal(real_.load(std::memory_order_relaxed), 4);
    case Kind::kInteger:
        return CString::number(integer_.load(std::memory_order_relaxed));
    case Kind::kString:
        break;
    }
    return string_;
}

std::optional<bool> CAttrValue::convertToBool() const
{
    switch (kind_) {
    case Kind::kInteger:
        return integer_.load(std::memory_order_relaxed) != 0;
    case Kind::kString:
        if (string_ == "1" || string_ == "true") {
            return true;
        }
        if (string_ == "0" || string_ == "false") {
            return false;
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<double> CAttrValue::convertToReal() const
{
    switch (kind_) {
    case Kind::kInteger:
        return integer_.load(std::memory_order_relaxed);
    case Kind::kString:
        return parseReal(string_);
    default:
        return std::nullopt;
    }
}

std::optional<std::int32_t> CAttrValue::convertToInteger() const
{
    switch (kind_) {
    case Kind::kBool:
        return bool_.load(std::memory_order_relaxed) ? 1 : 0;
    case Kind::kReal: {
        const double rounded = std::nearbyint(real_.load(std::memory_order_relaxed));
        const bool fits = rounded >= -2147483648.0 && rounded <= 2147483647.0;
        return fits ? std::optional(static_cast<std::int32_t>(rounded)) : std::nullopt;
    }
    case Kind::kString:
        return parseInteger(string_);
    default:
        return std::nullopt;
    }
}

} // namespace qel
