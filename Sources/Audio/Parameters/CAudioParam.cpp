// One parameter of an instance, with its values on both sides.
#include "CAudioParam.h"

#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"
#include "CAudioParamFilter.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

namespace qel {

namespace {

const CAudioParamDef* definitionAt(const CString& path)
{
    const CObject* shared = CObject::sharedObject();
    return shared ? dynamic_cast<const CAudioParamDef*>(shared->findObject(path)) : nullptr;
}

CAudioParamChange headOf(CAudioParamChange change)
{
    change.values = nullptr;
    change.pool = nullptr;
    return change;
}

// While filters run, a context speaks for them: what they write follows from the source, so it is no step to
// undo, and it is news to the sender and to the host.
class CDerivedWrite
{
public:
    explicit CDerivedWrite(CAudioParamContext& context)
        : context_(context), recorder_(std::exchange(context.recorder, nullptr)),
          sender_(std::exchange(context.sender, nullptr)), origin_(context.origin)
    {
        if (origin_ == CAudioParamOrigin::kHost) {
            context.origin = CAudioParamOrigin::kUser;
        }
    }
    ~CDerivedWrite()
    {
        context_.recorder = recorder_;
        context_.sender = sender_;
        context_.origin = origin_;
    }
    CDerivedWrite(const CDerivedWrite&) = delete;
    CDerivedWrite& operator=(const CDerivedWrite&) = delete;

private:
    CAudioParamContext& context_;
    CAudioParamRecorder* recorder_;
    CBridge* sender_;
    CAudioParamOrigin origin_;
};

} // namespace

CAudioParam::CAudioParam(CAudioParamCollector& collector, CString fullName)
    : collector_(collector), name_(std::move(fullName)), audioSide_(*this, collector.eventPool())
{}

CAudioParam::~CAudioParam() = default;

const CAudioParamInfo& CAudioParam::getInfo() const
{
    static const CAudioParamInfo kNone;
    return info_ ? *info_ : kNone;
}

double CAudioParam::getValue(std::int32_t group, std::int32_t entry, std::int32_t element) const
{
    const CLock lock(lock_);
    return current_.get(group, entry, element);
}

CString CAudioParam::getString(std::int32_t group, std::int32_t entry) const
{
    const CLock lock(lock_);
    return current_.getString(group, entry);
}

void CAudioParam::setInfo(std::shared_ptr<const CAudioParamInfo> info, const CString& defPath)
{
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (hasInfo() && info_->name == info->name && info_->hasSameFormat(*info)) {
        return;
    }
    info_ = std::move(info);
    defPath_ = defPath;
    current_.fillWithDefaults(*info_);
    initial_.formatLike(current_);
    initial_.copyValues(current_);
    hasInfo_.store(true, std::memory_order_release);

    auto audio = std::make_unique<CAudioParamStorage>();
    audio->formatLike(current_);
    collector_.postReplacement(*this, std::move(audio));
    postAll(context);
    announce({.group = CAudioParamChange::kWholeParam}, context);
}

bool CAudioParam::isInReach(const CAudioParamChange& change) const
{
    if (change.isWhole() || change.group >= current_.getGroupCount()) {
        return change.start == 0;
    }
    return change.start <= current_.getCount(change.group);
}

bool CAudioParam::change(const CAudioParamChange& change, CAudioParamContext& context)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (collector_.isReleased() || !current_.accepts(change) || !isInReach(change)) {
        return false;
    }
    if (context.recorder) {
        context.recorder->onBeforeChange(*this, current_, headOf(change));
    }
    current_.write(change);
    current_.clamp(info_->minValues, info_->maxValues);
    if (context.recorder) {
        context.recorder->onAfterChange(*this, current_, headOf(change));
    }
    CAudioParamChange written = recordOf(change.isWhole() ? 0 : change.group, change.start, change.count);
    written.group = change.group;
    written.resize = change.resize;
    // A time that never comes would hold up every later event of the target.
    written.time = std::isfinite(change.time) ? std::max(change.time, 0.0) : 0.0;
    if (!context.isKnownToAudio) {
        collector_.postChange(*this, written, context.batch);
    } else if (context.origin == CAudioParamOrigin::kAudio) {
        // What follows from another goes before its own.
        audioSide_.outbox().drop();
    }
    announce(change, context);
    return true;
}

CAudioParamChange CAudioParam::recordOf(std::int32_t group, std::int32_t start, std::int32_t count) const
{
    const std::span<const double> values = current_.getValues(group);
    return {.group = group,
            .start = start,
            .count = count,
            .esize = current_.getEsize(),
            .dtype = current_.getDtype(),
            .reserved = current_.getReserved(),
            .values = count > 0 ? values.data() + start * current_.getEsize() : nullptr,
            .pool = &current_.getPool()};
}

std::int32_t CAudioParam::firstToWrite(std::int32_t group, std::int32_t entry) const
{
    return std::min(entry, current_.getCount(group));
}

bool CAudioParam::setValue(std::int32_t group, std::int32_t entry, std::int32_t element, double value,
                           CAudioParamContext& context, double timeSec)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    const std::int32_t esize = current_.getEsize();
    if (!hasInfo() || current_.isString() || entry < 0 || entry >= CAudioParamStorage::kMaxEntries ||
        element < 0 || element >= esize) {
        return false;
    }
    const std::int32_t start = firstToWrite(group, entry);
    CInlineArray<double, 16> values;
    for (std::int32_t i = start; i <= entry; ++i) {
        for (std::int32_t k = 0; k < esize; ++k) {
            values.push(i == entry && k == element ? value : current_.get(group, i, k));
        }
    }
    return change({.group = group,
                   .start = start,
                   .count = entry - start + 1,
                   .time = timeSec,
                   .esize = esize,
                   .dtype = current_.getDtype(),
                   .reserved = current_.getReserved(),
                   .values = values.data()},
                  context);
}

bool CAudioParam::setString(std::int32_t group, std::int32_t entry, const CString& text,
                            CAudioParamContext& context)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (!hasInfo() || !current_.isString() || entry < 0 || entry >= CAudioParamStorage::kMaxEntries) {
        return false;
    }
    const std::int32_t start = firstToWrite(group, entry);
    CAudioParamData pool;
    CInlineArray<double, 16> ids;
    for (std::int32_t i = start; i <= entry; ++i) {
        ids.push(pool.addString(i == entry ? text : current_.getString(group, i)));
    }
    return change({.group = group,
                   .start = start,
                   .count = entry - start + 1,
                   .dtype = current_.getDtype(),
                   .reserved = current_.getReserved(),
                   .values = ids.data(),
                   .pool = &pool},
                  context);
}

void CAudioParam::clearToDefault(std::int32_t group, std::int32_t entry, CAudioParamContext& context)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (!hasInfo()) {
        return;
    }
    CAudioParamStorage defaults;
    defaults.formatLike(current_);
    defaults.write({.count = current_.getFillCount(),
                    .esize = current_.getEsize(),
                    .dtype = current_.getDtype(),
                    .reserved = current_.getReserved(),
                    .values = current_.getFill().data(),
                    .pool = &current_.getFillPool()});
    if (group < 0) {
        replaceAll(defaults, context);
    } else if (entry < 0) {
        replaceGroup(group, defaults, group, context);
    } else {
        replaceEntry(group, entry, defaults, group, context);
    }
}

void CAudioParam::reset(std::int32_t group, std::int32_t entry, CAudioParamContext& context)
{
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (!hasInfo()) {
        return;
    }
    if (group < 0) {
        replaceAll(initial_, context);
    } else if (entry < 0) {
        replaceGroup(group, initial_, group, context);
    } else {
        replaceEntry(group, entry, initial_, group, context);
    }
}

void CAudioParam::startAudioSide()
{
    const CLock lock(lock_);
    if (hasInfo()) {
        audioSide_.start(current_);
    }
}

// Under the lock.
void CAudioParam::replaceAll(const CAudioParamStorage& values, CAudioParamContext& context)
{
    if (collector_.isReleased()) {
        return;
    }
    CAudioParamChange whole = headOf(recordOf(0, 0, 0));
    whole.group = CAudioParamChange::kWholeParam;
    if (context.recorder) {
        context.recorder->onBeforeChange(*this, current_, whole);
    }
    current_.copyValues(values);
    if (context.recorder) {
        context.recorder->onAfterChange(*this, current_, whole);
    }
    postAll(context);
    announce(whole, context);
}

void CAudioParam::replaceGroup(std::int32_t group, const CAudioParamStorage& source, std::int32_t sourceGroup,
                               CAudioParamContext& context)
{
    const std::int32_t count = source.getCount(sourceGroup);
    if (count == 0 && group >= current_.getGroupCount()) {
        return; // what is not there needs no emptying
    }
    change({.group = group,
            .count = count,
            .resize = true,
            .esize = source.getEsize(),
            .dtype = source.getDtype(),
            .reserved = source.getReserved(),
            .values = source.getValues(sourceGroup).data(),
            .pool = &source.getPool()},
           context);
}

void CAudioParam::replaceEntry(std::int32_t group, std::int32_t entry, const CAudioParamStorage& source,
                               std::int32_t sourceGroup, CAudioParamContext& context)
{
    // What is not stored reads as the default.
    const bool isStored = entry < current_.getCount(group);
    if (source.isString()) {
        const CString& text = source.getString(sourceGroup, entry);
        if (isStored || current_.getString(group, entry) != text) {
            setString(group, entry, text, context);
        }
        return;
    }
    bool isNew = isStored;
    const std::int32_t start = firstToWrite(group, entry);
    CInlineArray<double, 16> values;
    for (std::int32_t i = start; i <= entry; ++i) {
        for (std::int32_t element = 0; element < source.getEsize(); ++element) {
            const double present = current_.get(group, i, element);
            const double wanted = i == entry ? source.get(sourceGroup, entry, element) : present;
            isNew = isNew || wanted != present;
            values.push(wanted);
        }
    }
    if (isNew) {
        change({.group = group,
                .start = start,
                .count = entry - start + 1,
                .esize = source.getEsize(),
                .reserved = source.getReserved(),
                .values = values.data()},
               context);
    }
}

// In one batch: between the clearing and the values, the audio side must not look.
void CAudioParam::postAll(CAudioParamContext& context)
{
    CAudioParamBatch& batch = context.batch ? *context.batch : collector_.newBatch();
    CAudioParamChange whole = recordOf(0, 0, 0);
    whole.group = CAudioParamChange::kWholeParam;
    collector_.postChange(*this, whole, &batch);
    for (std::int32_t group = 0; group < current_.getGroupCount(); ++group) {
        if (const std::int32_t count = current_.getCount(group)) {
            CAudioParamChange values = recordOf(group, 0, count);
            values.resize = true;
            collector_.postChange(*this, values, &batch);
        }
    }
    if (!context.batch) {
        collector_.submitBatch(batch);
    }
}

void CAudioParam::announce(const CAudioParamChange& change, CAudioParamContext& context)
{
    context.addNotice(*this, headOf(change));
    const CDerivedWrite derived(context);
    forEachFilter([&](CAudioParamFilter& filter) { filter.onParamChange(*this, headOf(change), context); });
}

void CAudioParam::addFilter(CAudioParamFilter& filter)
{
    const CLock lock(filterLock_);
    filters_.eraseFirst(&filter);
    filters_.push(&filter);
    hasFilters_.store(true, std::memory_order_release);
}

void CAudioParam::removeFilter(CAudioParamFilter& filter)
{
    const CLock lock(filterLock_);
    filters_.eraseFirst(&filter);
}

CError CAudioParam::load(CInputStream& stream, CAudioParamContext& context, bool intoInitial,
                         std::int32_t group, bool withPersistent)
{
    CString path;
    QEL_TRY(stream.readString(path), name_);
    const CAudioParamContext::Scope scope(context);
    if (!hasInfo()) {
        adoptDefinition(path);
    }
    const CLock lock(lock_);
    if (!hasInfo() || !(info_->isStorable || (withPersistent && info_->isPersistent))) {
        return {};
    }
    CAudioParamStorage loaded;
    loaded.formatLike(current_);
    QEL_TRY(loaded.load(stream), name_);
    loaded.clamp(info_->minValues, info_->maxValues);
    if (intoInitial) {
        initial_.copyValues(loaded);
    } else if (group < 0) {
        replaceAll(loaded, context);
    } else {
        replaceGroup(group, loaded, 0, context);
    }
    return {};
}

CError CAudioParam::check(CInputStream& stream, bool withPersistent) const
{
    CString path;
    QEL_TRY(stream.readString(path), name_);
    const CLock lock(lock_);
    const CAudioParamDef* definition = hasInfo() ? nullptr : definitionAt(path);
    const CAudioParamInfo* info = hasInfo() ? info_.get() : definition ? &definition->getInfo() : nullptr;
    if (!info || !(info->isStorable || (withPersistent && info->isPersistent))) {
        return {};
    }
    CAudioParamStorage read;
    read.format(std::max(info->esize, 1), info->dtype, info->reserved, 0);
    QEL_TRY(read.load(stream), name_);
    return {};
}

void CAudioParam::adoptDefinition(const CString& path)
{
    if (const CAudioParamDef* definition = definitionAt(path)) {
        setInfo(definition->shareInfo(), path);
    }
}

CError CAudioParam::save(COutputStream& stream, std::int32_t group) const
{
    const CLock lock(lock_);
    QEL_TRY(stream.writeString(defPath_), name_);
    QEL_TRY(current_.save(stream, group), name_);
    return {};
}

bool CAudioParam::filterFromAudio(double value, double timeSec)
{
    if (!hasFilters_.load(std::memory_order_acquire)) {
        return true;
    }
    const std::unique_lock lock(filterLock_, std::try_to_lock);
    return lock.owns_lock() && std::all_of(filters_.begin(), filters_.end(), [&](CAudioParamFilter* filter) {
               return filter->onChangeFromAudio(*this, value, timeSec);
           });
}

bool CAudioParam::takeFromAudio()
{
    CAudioParamContext context(CAudioParamOrigin::kAudio);
    context.isKnownToAudio = true; // what filters derive included
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (audioSide_.isOverridden()) {
        return !isChangedByAudio();
    }
    if (const std::optional<double> value = audioSide_.outbox().take()) {
        const CAudioParamChange change{.count = 1, .values = &*value};
        if (current_.write(change)) {
            announce(change, context);
        }
    }
    return true;
}

} // namespace qel
