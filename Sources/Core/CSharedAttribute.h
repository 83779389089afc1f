// Joins an attribute to a stored setting.
#pragma once

#include "CApplicationData.h"
#include "CObject.h"

namespace qel {

// Follows a setting of an application store on behalf of a CSharedAttribute.
template <class T>
class CSharedAttributeBridge : public CApplicationDataBridge<T>
{
public:
    using CApplicationDataBridge<T>::CApplicationDataBridge;
    ~CSharedAttributeBridge() override { this->endLink(); }
};

// Tag `core:shared-attribute`. Keeps the attribute named `attribute` of its parent equal to the setting
// `data-name`, both ways: at init the parent gets the stored value, `def-value` if there is none; a change on
// the parent is saved, and what any other instance in the process saves is set on the parent. `is-global`
// chooses the global store, otherwise the local one.
//
// The parent is set on its tree's own thread, by way of the event "update" to this object. A value that
// cannot be saved is traced and stays in force here. Without an application (tools, tests) the attribute has
// its default and nothing is stored.
class CSharedAttribute : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    virtual CError onUpdate(const CAttrMap& parameters);

    // Sets the parent's attribute, and so the setting, to "def-value".
    CError reset();

private:
    void onStoreChanged(CBridge* sender, std::uintptr_t userWord);
    CString readStore() const;

    CApplicationData* store_ = nullptr;
    CString attribute_;
    CString dataName_;
    CString default_;
    bool isGlobal_ = false;
    CString value_; // what the store and the parent agree on
    CSharedAttributeBridge<CSharedAttribute> bridge_{*this, &CSharedAttribute::onStoreChanged};
};

} // namespace qel
