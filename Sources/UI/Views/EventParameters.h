// What the parameters of events say.
#pragma once

#include "CAttrValue.h"

namespace qel {

// False, 0 or empty where the event does not have it.
inline bool eventFlag(const CAttrMap& parameters, const CString& name)
{
    const auto found = parameters.find(name);
    return found != parameters.end() && found->second.toBool().value_or(false);
}

inline double eventNumber(const CAttrMap& parameters, const CString& name)
{
    const auto found = parameters.find(name);
    return found == parameters.end() ? 0.0 : found->second.toReal().value_or(0.0);
}

inline CString eventText(const CAttrMap& parameters, const CString& name)
{
    const auto found = parameters.find(name);
    return found == parameters.end() ? CString() : found->second.toString();
}

} // namespace qel
