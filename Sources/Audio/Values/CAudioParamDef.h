// The tree node that declares a parameter.
#pragma once

#include "CAudioParamInfo.h"
#include "CAudioParamStorage.h"
#include "CObject.h"

#include <memory>

namespace qel {

// Turns its attributes into a CAudioParamInfo when it is initialised; the converters it names must stand in
// the shared tree before it. A fault in the declaration fails init() with a message that says which. Read
// from any thread afterwards.
class CAudioParamDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    const CAudioParamInfo& getInfo() const { return *info_; }
    // For the parameters so declared, in all instances.
    std::shared_ptr<const CAudioParamInfo> shareInfo() const { return info_; }
    // The default values, for whoever only reads them.
    const CAudioParamStorage& getDefaults() const { return defaults_; }

private:
    CError readFormat();
    void readFlags();
    CError readValues();

    CString visualName_;
    CString registry_;
    std::int32_t elementSize_ = 1;
    CString dataType_;
    bool isPersistent_ = false;
    bool isStorable_ = false;
    bool isGlobal_ = false;
    bool isDiscrete_ = false;
    bool isSingleGroup_ = false;
    CString converter_; // lists, as texts
    CString minValues_;
    CString maxValues_;
    CString defValues_;

    std::shared_ptr<CAudioParamInfo> info_ = std::make_shared<CAudioParamInfo>();
    CAudioParamStorage defaults_;
};

} // namespace qel
