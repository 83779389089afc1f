// The parameters of pointer events, typed.
#pragma once

#include "CAttrValue.h"

namespace qel {

inline bool flagOf(const CAttrMap& parameters, const char* key)
{
    const auto found = parameters.find(key);
    return found != parameters.end() && found->second.toBool().value_or(false);
}

inline double numberOf(const CAttrMap& parameters, const char* key, double fallback = 0.0)
{
    const auto found = parameters.find(key);
    return found == parameters.end() ? fallback : found->second.toReal().value_or(fallback);
}

inline CString textOf(const CAttrMap& parameters, const char* key)
{
    const auto found = parameters.find(key);
    return found == parameters.end() ? CString() : found->second.toString();
}

} // namespace qel
