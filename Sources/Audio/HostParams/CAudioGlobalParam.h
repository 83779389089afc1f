// A parameter that is kept in step with an application-wide setting.
#pragma once

#include "CApplicationData.h"
#include "CAudioParamListener.h"

namespace qel {

class CAudioParam;
class CAudioParamCollector;

// Joins group 0 of one number to a setting of a store, both ways: a change of the parameter is saved, a
// change of the setting, by this instance or another, is written to the parameter. A setting that is missing
// or no number leaves the parameter alone. Control threads.
class CAudioGlobalParam
{
public:
    CAudioGlobalParam(CAudioParamCollector& params, const CString& paramName, CApplicationData& store,
                      const CString& setting);
    CAudioGlobalParam(const CAudioGlobalParam&) = delete;
    CAudioGlobalParam& operator=(const CAudioGlobalParam&) = delete;

private:
    class Listener : public CAudioParamListener
    {
    public:
        explicit Listener(CAudioGlobalParam& owner) : owner_(owner) {}
        ~Listener() override { endLink(); }
        void onParamChange(const CAudioParamNotice& notice) override { owner_.onParamChange(notice); }

    private:
        CAudioGlobalParam& owner_;
    };

    void onParamChange(const CAudioParamNotice& notice);
    void onSettingChange(CBridge* sender, std::uintptr_t userWord);

    CAudioParam& param_;
    CApplicationData& store_;
    const CString setting_;
    CApplicationDataBridge<CAudioGlobalParam> storeBridge_{*this, &CAudioGlobalParam::onSettingChange};
    Listener listener_{*this}; // last, as the bridge before it: they go before what a notice touches
};

} // namespace qel
