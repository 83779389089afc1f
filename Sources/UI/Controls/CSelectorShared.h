// Chooses the value of a setting.
#pragma once

#include "CSelector.h"
#include "SharedTarget.h"

namespace qel {

// The base of selectors whose buttons stand for the values of an attribute.
//
//     shared-attribute   path of the object that has the attribute, or of what keeps it as a setting
//                        (SharedTarget.h)
class CSelectorShared : public CSelector
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

protected:
    // The attribute where "shared-attribute" does not say it.
    virtual const char* getAttributeName() const = 0;
    // The value that a button stands for.
    virtual CString getButtonValue(std::int32_t index) const = 0;

    CError onButton(std::int32_t index, bool isRight) override;
    CError updateActive() override;

private:
    SharedTarget shared_;

    // Bound attributes.
    CString sharedAttribute_;
};

} // namespace qel
