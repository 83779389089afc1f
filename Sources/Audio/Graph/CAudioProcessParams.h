// Makes the parameters that a tree of process definitions declares.
#pragma once

#include "CAudioParamFilter.h"
#include "CError.h"

#include <memory>
#include <vector>

namespace qel {

class CAudioParamCollector;
class CAudioProcessDefBase;

// Goes once over the declarations of a root definition, before its processes bind their slots: enters remaps,
// makes the global parameters that no remap covers, and then starts the parameter filters, which it owns.
// Must go before the collector. Building thread.
class CAudioProcessParams
{
public:
    CAudioProcessParams() = default;
    ~CAudioProcessParams();
    CAudioProcessParams(const CAudioProcessParams&) = delete;
    CAudioProcessParams& operator=(const CAudioProcessParams&) = delete;

    // `processName` is the full name of the process that the definition will be instantiated as.
    CError declare(const CAudioProcessDefBase& def, const CString& processName, CAudioParamCollector& params);

private:
    std::vector<std::unique_ptr<CAudioParamFilter>> filters_;
};

} // namespace qel
