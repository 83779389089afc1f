// The directory of an instance's parameters, and the road of their changes to the audio thread.
#include "CAudioParamCollector.h"

#include "CAudioParamListener.h"

#include <algorithm>
#include <utility>

namespace qel {

void CAudioParamCollector::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAudioParamCollector::envPath_>("env", "");
}

CAudioParamCollector::CAudioParamCollector() = default;

CAudioParamCollector::~CAudioParamCollector() = default;

CError CAudioParamCollector::init()
{
    QEL_TRY(CObject::init(), getFullName());
    return require(env_, envPath_,
                   "@qelstr_CAudioParamCollector_init_NoAudioEnv No audio environment object '%1' found.");
}

void CAudioParamCollector::release()
{
    isReleased_.store(true, std::memory_order_release);
    CObject::release();
}

bool CAudioParamCollector::NameOrder::operator()(const CString& a, const CString& b) const
{
    if (a.length() != b.length()) {
        return a.length() < b.length();
    }
    for (std::size_t i = a.length(); i-- > 0;) {
        if (a[i] != b[i]) {
            return a[i] < b[i];
        }
    }
    return false;
}

CAudioParam& CAudioParamCollector::getParam(const CString& fullName)
{
    const CLock lock(lock_);
    std::unique_ptr<CAudioParam>& param = params_[fullName];
    if (!param) {
        param = std::make_unique<CAudioParam>(*this, fullName);
        if (isFinalized_) {
            offer(*param);
        }
    }
    return *param;
}

CAudioParam& CAudioParamCollector::resolveParam(const CString& fullName)
{
    return getParam(resolveName(fullName));
}

CString CAudioParamCollector::resolveName(const CString& fullName)
{
    const CLock lock(lock_);
    CString name = fullName;
    for (std::size_t steps = remaps_.size(); steps > 0; --steps) {
        const auto remap = remaps_.find(name);
        if (remap == remaps_.end()) {
            break;
        }
        name = remap->second;
    }
    return name;
}

void CAudioParamCollector::addRemap(const CString& original, const CString& target)
{
    const CLock lock(lock_);
    remaps_[original] = target;
}

bool CAudioParamCollector::isRemapped(const CString& fullName)
{
    const CLock lock(lock_);
    const auto remap = remaps_.find(fullName);
    return remap != remaps_.end() && remap->second != fullName;
}

void CAudioParamCollector::addRegistry(CAudioParamRegistryBase& registry)
{
    const CLock lock(lock_);
    const auto isLonger = [](const CAudioParamRegistryBase* a, const CAudioParamRegistryBase* b) {
        return a->getHierarchy().length() > b->getHierarchy().length();
    };
    registries_.insert(std::upper_bound(registries_.begin(), registries_.end(), &registry, isLonger),
                       &registry);
}

void CAudioParamCollector::removeRegistry(CAudioParamRegistryBase& registry)
{
    const CLock lock(lock_);
    std::erase(registries_, &registry);
    const CLock audienceLock(audienceLock_);
    for (const auto& [name, param] : params_) {
        param->registries().eraseFirst(&registry);
    }
}

CAudioParamRegistryBase* CAudioParamCollector::getRegistry(const CString& name)
{
    const CLock lock(lock_);
    const auto isNamed = [&name](const CAudioParamRegistryBase* registry) {
        const CString& full = registry->getRegistryName();
        const std::size_t dot = full.findLast(u'.');
        return full == name || (dot != CString::kNone && full.substring(dot + 1) == name);
    };
    const auto found = std::find_if(registries_.begin(), registries_.end(), isNamed);
    return found == registries_.end() ? nullptr : *found;
}

void CAudioParamCollector::finalize()
{
    const CLock lock(lock_);
    if (std::exchange(isFinalized_, true)) {
        return;
    }
    for (const auto& [name, param] : params_) {
        offer(*param);
    }
    for (CAudioParamRegistryBase* registry : registries_) {
        registry->onParamsComplete();
    }
}

void CAudioParamCollector::offer(CAudioParam& param)
{
    for (CAudioParamRegistryBase* registry : registries_) {
        const CString& hierarchy = registry->getHierarchy();
        if (param.getName().substring(0, hierarchy.length()) != hierarchy || !registry->addParam(param)) {
            continue;
        }
        {
            const CLock lock(audienceLock_);
            param.registries().push(registry);
        }
        if (registry->isEnumerated()) {
            return;
        }
    }
}

std::vector<CAudioParam*> CAudioParamCollector::allParams()
{
    const CLock lock(lock_);
    std::vector<CAudioParam*> all;
    all.reserve(params_.size());
    for (const auto& [name, param] : params_) {
        all.push_back(param.get());
    }
    return all;
}

void CAudioParamCollector::endBuilding()
{
    isBuilding_ = false;
    for (const auto& [name, param] : params_) {
        param->startAudioSide();
    }
}

CAudioParamBatch& CAudioParamCollector::newBatch()
{
    const CLock lock(env_->getLock());
    return pool_.takeBatch();
}

void CAudioParamCollector::submitBatch(CAudioParamBatch& batch)
{
    const CLock lock(env_->getLock());
    CAudioParamBatch* pending = pending_.exchange(nullptr, std::memory_order_acquire);
    if (!pending) {
        putPending(batch);
        return;
    }
    const bool coalesce = !env_->isInProcess();
    CAudioParamEvent* event = batch.takeAll();
    while (event) {
        CAudioParamEvent* following = event->next;
        pending->append(*event, coalesce, pool_);
        event = following;
    }
    pool_.recycle(batch);
    putPending(*pending);
}

void CAudioParamCollector::dropBatch(CAudioParamBatch& batch)
{
    const CLock lock(env_->getLock());
    for (const CAudioParamEvent* event = batch.first(); event; event = event->next) {
        if (event->bringsRooms()) {
            event->getParam().audioSide().forgetRoom();
        }
    }
    pool_.recycle(batch);
}

void CAudioParamCollector::takeChangesFromAudio()
{
    if (hasChangesFromAudio_.exchange(false, std::memory_order_acquire)) {
        bool isLeft = false;
        for (CAudioParam* param : allParams()) {
            isLeft |= !param->takeFromAudio();
        }
        if (isLeft) {
            hasChangesFromAudio_.store(true, std::memory_order_release);
        }
    }
}

void CAudioParamCollector::postChange(CAudioParam& param, const CAudioParamChange& change,
                                      CAudioParamBatch* batch)
{
    if (isBuilding_) {
        return;
    }
    const CLock lock(env_->getLock());
    const std::int32_t bindings = param.audioSide().getBindingCount();
    CAudioParamEvent& event = pool_.takeEvent(bindings);
    event.set(param, change);
    if (param.audioSide().outgrows(change, param.getCurrent())) {
        event.bringRooms(static_cast<std::size_t>(bindings) + 1, param.getCurrent());
    }
    event.depart();
    postEvent(event, batch);
}

void CAudioParamCollector::postReplacement(CAudioParam& param, std::unique_ptr<CAudioParamStorage> storage)
{
    if (isBuilding_) {
        return;
    }
    const CLock lock(env_->getLock());
    CAudioParamEvent& event = pool_.takeEvent(0);
    event.setReplacement(param, std::move(storage));
    postEvent(event, nullptr);
}

// Under the lock of CAudioEnv.
void CAudioParamCollector::postEvent(CAudioParamEvent& event, CAudioParamBatch* batch)
{
    if (batch) {
        batch->append(event, true, pool_);
        return;
    }
    // While a call runs, the audio thread may be past the write that this one would replace; two writes then
    // stay two.
    CAudioParamBatch* pending = pending_.exchange(nullptr, std::memory_order_acquire);
    CAudioParamBatch& target = pending ? *pending : pool_.takeBatch();
    target.append(event, !env_->isInProcess(), pool_);
    putPending(target);
}

void CAudioParamCollector::applyPending(double timeOffsetSec)
{
    CAudioParam* changed = std::exchange(firstChanged_, nullptr);
    while (changed) {
        CAudioParam* following = changed->audioSide().nextChanged;
        changed->audioSide().applyPending();
        changed = following;
    }
    ++generation_;

    CAudioParamBatch* batch = pending_.exchange(nullptr, std::memory_order_acquire);
    if (!batch) {
        return;
    }
    CAudioParamEvent* event = batch->takeAll();
    while (event) {
        CAudioParamEvent* following = event->next;
        event->shiftTime(timeOffsetSec);
        receive(*event);
        event = following;
    }
    pool_.retire(*batch);
}

bool CAudioParamCollector::changeFromAudio(CAudioParam& param, double value, double timeSec)
{
    if (!param.hasInfo()) {
        return true;
    }
    // Those that follow come first: where they find no room, the whole is tried again.
    if (!param.filterFromAudio(value, timeSec) || !sendFromAudio(param, value, timeSec)) {
        return false;
    }
    param.audioSide().outbox().put(value);
    hasChangesFromAudio_.store(true, std::memory_order_release);
    return true;
}

bool CAudioParamCollector::sendFromAudio(CAudioParam& param, double value, double timeSec)
{
    CAudioParamEvent* event = param.hasInfo() ? pool_.takeAudioEvent() : nullptr;
    if (event) {
        event->set(param, {.count = 1, .time = timeSec, .values = &value});
        receive(*event);
    }
    return event || !param.hasInfo();
}

void CAudioParamCollector::receive(CAudioParamEvent& event)
{
    CAudioParam& param = event.getParam();
    ++arrivals_;
    if (param.audioSide().receive(event, generation_)) {
        param.audioSide().nextChanged = std::exchange(firstChanged_, &param);
    }
}

void CAudioParamCollector::deliver(const CAudioParamNotice& notice)
{
    if (isBuilding_) {
        return;
    }
    // Told from a copy, outside the lock: a registry may write.
    CInlineArray<CAudioParamRegistryBase*, 2> registries;
    {
        const CLock lock(audienceLock_);
        registries = notice.param->registries();
    }
    for (CAudioParamRegistryBase* registry : registries) {
        registry->onParamChange(notice);
    }
    CAudioParamListener::tellAll(*this, notice);
}

} // namespace qel
