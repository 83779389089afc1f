// What the collector needs to know of a preset registry.
#pragma once

#include "CAudioParamContext.h"
#include "CCheckedObject.h"
#include "CString.h"

namespace qel {

// A registry gives the parameters below its hierarchy a memory. It joins the collector in its init and leaves
// it in its release. Calls come from control threads.
class CAudioParamRegistryBase : public CCheckedObject
{
public:
    // Full name of the registry object.
    virtual const CString& getRegistryName() const = 0;
    // Name prefix of the parameters that belong to it.
    virtual const CString& getHierarchy() const = 0;
    // Takes the parameters it gets for itself: registries with a shorter hierarchy are not asked.
    virtual bool isEnumerated() const = 0;

    // Offers a parameter whose name begins with the hierarchy; true if the registry takes it. The collector's
    // lock is held.
    virtual bool addParam(CAudioParam& param) = 0;
    // All parameters there are have been offered. The collector's lock is held.
    virtual void onParamsComplete() = 0;
    // A parameter that it took has changed. No lock of the parameter is held, unless the writer held it.
    virtual void onParamChange(const CAudioParamNotice& notice) = 0;
};

} // namespace qel
