// A parameter that is kept in step with an application-wide setting.
#include "CAudioGlobalParam.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "NumberSyntax.h"
#include "Trace.h"

namespace qel {

namespace {

// A setting is in the parameter's real unit; this many decimals keep a sample at any rate.
constexpr int kDecimals = 9;

} // namespace

CAudioGlobalParam::CAudioGlobalParam(CAudioParamCollector& params, const CString& paramName,
                                     CApplicationData& store, const CString& setting)
    : param_(params.getParam(paramName)), store_(store), setting_(setting)
{
    onSettingChange(nullptr, 0);
    storeBridge_.attachSetting(store_, setting_);
    listener_.attach(&params);
}

void CAudioGlobalParam::onParamChange(const CAudioParamNotice& notice)
{
    if (notice.param == &param_) {
        traceError(store_.saveString(setting_, formatReal(param_.getValue(0, 0), kDecimals), &storeBridge_));
    }
}

void CAudioGlobalParam::onSettingChange(CBridge*, std::uintptr_t)
{
    if (const auto value = parseReal(store_.loadString(setting_, {}))) {
        CAudioParamContext context;
        context.sender = &listener_;
        param_.setValue(0, 0, 0, *value, context);
    }
}

} // namespace qel
