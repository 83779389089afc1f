// The parameter that shows which preset is in force.
#include "CAudioPresetNameParam.h"

namespace qel {

void CAudioPresetNameParam::setUp(CAudioParamCollector& collector, const CString& name)
{
    collector_ = &collector;
    name_ = name;
}

void CAudioPresetNameParam::show(const CString& title, std::int32_t first, std::int32_t last,
                                 CAudioParamContext& context)
{
    if (!isThere()) {
        return;
    }
    CAudioParam& nameParam = param();
    for (std::int32_t group = first; group <= last; ++group) {
        if (nameParam.hasInfo() && nameParam.getString(group, 0) != title) {
            nameParam.setString(group, 0, title, context);
        }
    }
}

void CAudioPresetNameParam::markAsUser(const CAudioParamNotice& notice)
{
    if (!isThere() || notice.origin == CAudioParamOrigin::kActivation || is(*notice.param)) {
        return;
    }
    static const CString kUserName = "User";
    CAudioParam& nameParam = param();
    CAudioParamContext context(notice.origin);
    context.recorder = notice.recorder;
    // A step writes the name even if it stands there already: the steps of one movement merge only while they
    // write the same.
    const auto mark = [&](std::int32_t group) {
        if (nameParam.hasInfo() && (notice.recorder || nameParam.getString(group, 0) != kUserName)) {
            nameParam.setString(group, 0, kUserName, context);
        }
    };
    if (!notice.change.isWhole()) {
        mark(notice.change.group);
        return;
    }
    std::int32_t groups = 0;
    {
        const CLock lock(notice.param->getLock());
        groups = notice.param->getCurrent().getGroupCount();
    }
    for (std::int32_t group = 0; group < groups; ++group) {
        mark(group);
    }
}

} // namespace qel
