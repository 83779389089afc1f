// Presets that parameters pick.
#include "CAudioPresetPicker.h"

#include "CAudioParamSubtree.h"
#include "PresetStores.h"

#include <algorithm>
#include <cmath>

namespace qel {

void CAudioPresetPicker::setUp(CAudioParamCollector& collector, CAudioParamRegistryBase& registry,
                               const CString& storeName, Picked picked)
{
    collector_ = &collector;
    registry_ = &registry;
    picked_ = std::move(picked);
    loadStoredList(storeName, list_);
    listener_.attach(&collector);
}

void CAudioPresetPicker::onParamChange(const CAudioParamNotice& notice)
{
    const CAudioParam& param = *notice.param;
    std::int32_t group = notice.change.group;
    CString registry;
    {
        const CLock lock(param.getLock());
        if (!param.hasInfo() || param.getInfo().isString()) {
            return;
        }
        registry = param.getInfo().paramRegistry;
        if (notice.change.isWhole() || param.getInfo().isSingleGroup) {
            group = CAudioParamSubtree::kAllGroups;
        }
    }
    if (registry.isEmpty() || collector_->getRegistry(registry) != registry_) {
        return;
    }
    const double index = std::floor(param.getValue(std::max(group, 0), 0) + 0.5);
    if (index >= 0.0 && index < list_.getCount()) {
        picked_(list_.get(static_cast<std::int32_t>(index)), group);
    }
}

} // namespace qel
