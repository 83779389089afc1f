// The tree node that declares a rule which writes parameters from others.
#pragma once

#include "CObject.h"

#include <vector>

namespace qel {

class CAudioParamFilter;

// Base of all such rules, a child of a process definition. `src` and `dst` are comma-separated lists of
// parameter names relative to that process; an empty one fails init(). Each derived class makes its own kind
// of run-time filter, one for each instance of the process. Read-only after init.
class CAudioParamFilterDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    // A new filter, not yet initialised, that belongs to the caller.
    virtual CAudioParamFilter* createFilter() const = 0;

    const std::vector<CString>& getSourceNames() const { return sourceNames_; }
    const std::vector<CString>& getDestinationNames() const { return destinationNames_; }

private:
    CString src_;
    CString dst_;
    std::vector<CString> sourceNames_;
    std::vector<CString> destinationNames_;
};

} // namespace qel
