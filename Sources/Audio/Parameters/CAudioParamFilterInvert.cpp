// A switch that is on while another is off.
#include "CAudioParamFilterInvert.h"

#include "CAudioParamCollector.h"

#include <algorithm>

namespace qel {

namespace {

// Whole groups, so that the two hold the same entries whatever the change was.
void invertGroup(const CAudioParamStorage& source, std::int32_t group, double timeSec, CAudioParam& target,
                 CAudioParamContext& context)
{
    CInlineArray<double, 16> values;
    for (const double value : source.getValues(group)) {
        values.push(1.0 - value);
    }
    const CAudioParamContext::Scope scope(context);
    const CLock lock(target.getLock());
    if (values.isEmpty() && target.getCurrent().getCount(group) == 0) {
        return;
    }
    target.change({.group = group,
                   .count = source.getCount(group),
                   .resize = true,
                   .time = timeSec,
                   .esize = source.getEsize(),
                   .values = values.data()},
                  context);
}

} // namespace

void CAudioParamFilterInvert::onParamChange(CAudioParam& source, const CAudioParamChange& change,
                                            CAudioParamContext& context)
{
    const CAudioParamStorage& values = source.getCurrent();
    if (values.isString()) {
        return;
    }
    forEachDestination(source, [&](CAudioParam& target) {
        if (!change.isWhole()) {
            invertGroup(values, change.group, change.time, target, context);
            return;
        }
        const CLock lock(target.getLock());
        const std::int32_t groups = std::max(values.getGroupCount(), target.getCurrent().getGroupCount());
        for (std::int32_t group = 0; group < groups; ++group) {
            invertGroup(values, group, change.time, target, context);
        }
    });
}

bool CAudioParamFilterInvert::onChangeFromAudio(CAudioParam& source, double value, double timeSec)
{
    bool isSent = true;
    forEachDestination(source, [&](CAudioParam& target) {
        isSent = isSent && target.getCollector().sendFromAudio(target, 1.0 - value, timeSec);
    });
    return isSent;
}

} // namespace qel
