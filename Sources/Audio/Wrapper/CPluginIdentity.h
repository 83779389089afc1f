// What the plug-in is, by its project.
#pragma once

#include "CError.h"
#include "CString.h"

#include <cstdint>

namespace qel {

class CObject;

struct CPluginIdentity
{
    CString name;
    CString vendor;
    std::int32_t code = 0; // four characters, the first in the high byte
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t patch = 0;
    std::int32_t channelCount = 0; // of the graph
    std::int32_t groupCount = 0;
    bool usesHostBpm = false;

    CError read(const CObject& project);

private:
    CError readCode(const CString& text);
    CError readVersion(const CString& text);
};

} // namespace qel
