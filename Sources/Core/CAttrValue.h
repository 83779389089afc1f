// The value of an attribute: set in one form, read in any.
#pragma once

#include "CString.h"

#include <atomic>
#include <optional>

namespace qel {

// Holds a bool, a real, an integer or a string, and converts on request. A conversion is made at most once
// per form: its result is kept beside the value. What does not convert gives no result, and the caller keeps
// its default; nothing is ever reported.
//
// From \ to   bool                      real        integer                 string
// bool                                  fails       0 or 1                  "true" or "false"
// real        fails                                 nearest, ties to even   4 decimals
// integer     not 0                     exact                               decimal
// string      "0" "false" "1" "true"    parseReal   parseInteger
//
// A value that nobody changes may be read from any number of threads at once.
class CAttrValue
{
public:
    enum class Kind : std::int32_t
    {
        kBool = 0,
        kReal = 1,
        kInteger = 2,
        kString = 3
    };

    CAttrValue() = default; // the empty string
    explicit CAttrValue(bool value);
    explicit CAttrValue(double value);
    explicit CAttrValue(std::int32_t value);
    explicit CAttrValue(CString value);
    explicit CAttrValue(const char* latin1) : CAttrValue(CString(latin1)) {}
    CAttrValue(const CAttrValue& other) { *this = other; }
    CAttrValue(CAttrValue&& other) noexcept { *this = std::move(other); }
    CAttrValue& operator=(const CAttrValue& other);
    CAttrValue& operator=(CAttrValue&& other) noexcept;
    ~CAttrValue() = default;

    Kind kind() const { return kind_; }
    std::optional<bool> toBool() const;
    std::optional<double> toReal() const;
    std::optional<std::int32_t> toInteger() const;
    // Every kind has a text.
    CString toString() const;

private:
    // Bits of cachedForms_. A form whose conversion fails is simply tried again: that is the rare case.
    enum : std::uint32_t
    {
        kBoolForm = 1,
        kRealForm = 2,
        kIntegerForm = 4,
        kStringForm = 8
    };

    bool has(std::uint32_t form) const { return (cachedForms_.load(std::memory_order_acquire) & form) != 0; }
    void copyForms(const CAttrValue& other);
    std::optional<bool> convertToBool() const;
    std::optional<double> convertToReal() const;
    std::optional<std::int32_t> convertToInteger() const;

    // Readers fill the caches, so these are atomic: two threads may convert the same value at once.
    mutable std::atomic<std::uint32_t> cachedForms_{kStringForm};
    Kind kind_ = Kind::kString;
    mutable std::atomic<bool> bool_{false};
    mutable std::atomic<std::int32_t> integer_{0};
    mutable std::atomic<double> real_{0.0};
    CString string_;
};

using CAttrMap = CStringMap<CAttrValue>;

} // namespace qel
