// The parameters below one name, as presets see them.
#include "CAudioParamSubtree.h"

#include "CAudioParamRegistryBatch.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <algorithm>
#include <set>

namespace qel {

namespace {

// Presets from before the parameter moved out of the routing carry it under the old key. Where both are
// missing it stays as it is: it belongs to the session's cost more than to the sound.
constexpr const char* kMovedParam = "plugin.modMain.oversampling";
constexpr const char* kMovedParamOldKey = "io-params.oversampling";

bool isStorable(const CAudioParam& param, bool withPersistent)
{
    const CLock lock(param.getLock());
    return param.hasInfo() &&
           (param.getInfo().isStorable || (withPersistent && param.getInfo().isPersistent));
}

// A parameter of one group for the whole instance takes no part in what is done to one group.
bool isOutside(const CAudioParam& param, std::int32_t group)
{
    const CLock lock(param.getLock());
    return group >= 0 && param.hasInfo() && param.getInfo().isSingleGroup;
}

} // namespace

void CAudioParamSubtree::setUp(CAudioParamCollector& collector, const CString& hierarchy,
                               const CString& excluded)
{
    collector_ = &collector;
    hierarchy_ = hierarchy;
    excluded_ = excluded;
}

bool CAudioParamSubtree::offer(CAudioParam& param)
{
    const CString& name = param.getName();
    const std::size_t length = hierarchy_.length();
    if (name.length() <= length + 1 || name[length] != u'.' || name == excluded_) {
        return false;
    }
    const CLock lock(waitingLock_);
    waiting_.emplace_back(name, &param);
    return true;
}

void CAudioParamSubtree::synchronise()
{
    std::vector<std::pair<CString, CAudioParam*>> joining;
    {
        const CLock lock(waitingLock_);
        joining.swap(waiting_);
    }
    for (const auto& [name, param] : joining) {
        const CString key = name.substring(hierarchy_.length() + 1);
        params_[key] = param;
        loadInitialValues(*param, key);
    }
}

void CAudioParamSubtree::setInitialValues(CAudioPreset preset)
{
    const CLock lock(mapLock_);
    initial_ = std::move(preset);
    for (const auto& [key, param] : params_) {
        loadInitialValues(*param, key);
    }
}

void CAudioParamSubtree::loadInitialValues(CAudioParam& param, const CString& key)
{
    const CByteBuffer* block = initial_.findEntry(key);
    if (!block) {
        return;
    }
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    CMemoryReader reader(block->bytes());
    traceError(param.load(reader, context, true, kAllGroups, false));
}

CAudioParam& CAudioParamSubtree::paramOf(const CString& key)
{
    const auto known = params_.find(key);
    if (known != params_.end()) {
        return *known->second;
    }
    CAudioParam& param = collector_->getParam(hierarchy_ + "." + key);
    if (param.getName() != excluded_) {
        params_[key] = &param;
    }
    return param;
}

CError CAudioParamSubtree::store(CAudioPreset& preset, bool withPersistent, std::int32_t group)
{
    const CLock lock(mapLock_);
    synchronise();
    CAudioPreset stored(preset.getName());
    for (const auto& [key, param] : params_) {
        QEL_TRY(storeParam(stored, key, *param, withPersistent, group), hierarchy_);
    }
    preset = std::move(stored);
    return {};
}

CError CAudioParamSubtree::storeParam(CAudioPreset& preset, const CString& key, const CAudioParam& param,
                                      bool withPersistent, std::int32_t group) const
{
    const CLock lock(param.getLock());
    if (!isStorable(param, withPersistent) || (group >= 0 && param.getCurrent().getCount(group) == 0)) {
        return {};
    }
    CMemoryWriteBuffer buffer;
    QEL_TRY(param.save(buffer, group), key);
    CByteBuffer block;
    buffer.copyTo(block);
    preset.setEntry(key, std::move(block));
    return {};
}

const CByteBuffer* CAudioParamSubtree::oldBlockOf(const CAudioPreset& preset, const CAudioParam& param) const
{
    return param.getName() == kMovedParam ? preset.findEntry(kMovedParamOldKey) : nullptr;
}

CError CAudioParamSubtree::check(const CAudioPreset& preset, bool partial, bool withPersistent,
                                 std::int32_t group)
{
    const CLock lock(mapLock_);
    synchronise();
    for (const auto& [key, block] : preset.getEntries()) {
        const CAudioParam& param = paramOf(key);
        CMemoryReader reader(block.bytes());
        if (!isOutside(param, group)) {
            QEL_TRY(param.check(reader, withPersistent), key);
        }
    }
    for (const auto& [key, param] : params_) {
        const CByteBuffer* old = oldBlockOf(preset, *param);
        if (old && !partial && !preset.findEntry(key) && !isOutside(*param, group)) {
            CMemoryReader reader(old->bytes());
            QEL_TRY(param->check(reader, false), key);
        }
    }
    return {};
}

CError CAudioParamSubtree::apply(const CAudioPreset& preset, bool partial, CAudioParamContext& context,
                                 bool withPersistent, std::int32_t group)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(mapLock_);
    CAudioParamRegistryBatch batch(*collector_, context);
    QEL_TRY(check(preset, partial, withPersistent, group), hierarchy_);
    std::set<const CAudioParam*> visited;
    for (const auto& [key, block] : preset.getEntries()) {
        CAudioParam& param = paramOf(key);
        visited.insert(&param);
        CMemoryReader reader(block.bytes());
        if (!isOutside(param, group)) {
            QEL_TRY(param.load(reader, context, false, group, withPersistent), key);
        }
    }
    for (const auto& [key, param] : params_) {
        if (partial || visited.contains(param) || !isStorable(*param, false) || isOutside(*param, group)) {
            continue;
        }
        if (param->getName() != kMovedParam) {
            param->clearToDefault(group, -1, context);
        } else if (const CByteBuffer* old = oldBlockOf(preset, *param)) {
            CMemoryReader reader(old->bytes());
            QEL_TRY(param->load(reader, context, false, group, false), key);
        }
    }
    batch.submit();
    return {};
}

void CAudioParamSubtree::reset(CAudioParamContext& context)
{
    const CLock lock(mapLock_);
    synchronise();
    for (const auto& [key, param] : params_) {
        if (isStorable(*param, false)) {
            param->reset(-1, -1, context);
        }
    }
}

std::int32_t CAudioParamSubtree::countGroups()
{
    const CLock lock(mapLock_);
    std::int32_t groups = 1;
    for (const auto& [key, param] : params_) {
        const CLock paramLock(param->getLock());
        groups = std::max(groups, param->getCurrent().getGroupCount());
    }
    return groups;
}

void CAudioParamSubtree::forEachHostOnly(
    const std::function<void(const CString&, const CAudioParam&)>& function)
{
    const CLock lock(mapLock_);
    synchronise();
    for (const auto& [key, param] : params_) {
        if (isStorable(*param, true) && !isStorable(*param, false)) {
            function(key, *param);
        }
    }
}

} // namespace qel
