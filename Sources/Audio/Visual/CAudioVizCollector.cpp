// Gathers what meters measure, for whoever looks.
#include "CAudioVizCollector.h"

#include "CAudioEnv.h"
#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kEnableDef = "audio.param-enable-viz";

} // namespace

void CAudioVizCollector::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioVizCollector;
    CObject::buildClassInfo(info);
    info.bind<&Self::envPath_>("env", "");
    info.bind<&Self::paramsPath_>("param-collector", "");
}

CError CAudioVizCollector::init()
{
    QEL_TRY(CObject::init(), getFullName());
    env_ = dynamic_cast<CAudioEnv*>(findObject(envPath_));
    if (!env_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioVizCollector_init_NoAudioEnv No audio environment object '%1' found.",
                 envPath_);
    }
    params_ = dynamic_cast<CAudioParamCollector*>(findObject(paramsPath_));
    if (!params_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioVizCollector_init_NoParamCollector No parameter collector '%1' found.",
                 paramsPath_);
    }
    CObject* shared = sharedObject();
    auto* def = dynamic_cast<CAudioParamDef*>(shared ? shared->findObject(kEnableDef) : nullptr);
    if (!def) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioVizCollector_init_NoParamDef No parameter "
                                "'audio.param-enable-viz' definition found.");
    }
    enableInfo_ = def->shareInfo();
    enablePath_ = def->getFullName();
    return {};
}

std::int32_t CAudioVizCollector::registerSource(const CString& fullName)
{
    const std::int32_t known = findSource(fullName);
    if (known >= 0) {
        return known;
    }
    CAudioParam& enable = params_->getParam(fullName + "-enable");
    enable.setInfo(enableInfo_, enablePath_);
    const CLock lock(lock_);
    sources_.push_back({fullName, &enable, 0});
    return static_cast<std::int32_t>(sources_.size()) - 1;
}

std::int32_t CAudioVizCollector::findSource(const CString& fullName)
{
    const CLock lock(lock_);
    const auto found = std::find_if(sources_.begin(), sources_.end(),
                                    [&](const Source& source) { return source.name == fullName; });
    return found == sources_.end() ? -1 : static_cast<std::int32_t>(found - sources_.begin());
}

void CAudioVizCollector::addListener(std::int32_t id)
{
    changeListeners(id, 1);
}

void CAudioVizCollector::removeListener(std::int32_t id)
{
    changeListeners(id, -1);
}

void CAudioVizCollector::changeListeners(std::int32_t id, std::int32_t by)
{
    // Notices go out when the lock is left; the parameter itself is written within it, so that of two threads
    // the one that counted last also writes last.
    CAudioParamContext context(CAudioParamOrigin::kAudio);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(lock_);
    if (id < 0 || static_cast<std::size_t>(id) >= sources_.size()) {
        return;
    }
    Source& source = sources_[static_cast<std::size_t>(id)];
    const auto isHeard = [](const Source& each) { return each.listeners > 0; };
    if (by > 0 && std::none_of(sources_.begin(), sources_.end(), isHeard)) {
        isStale_.store(true, std::memory_order_release);
        if (!buffers_) {
            buffers_ = std::make_unique<Buffers>();
            arriving_.store(buffers_.get(), std::memory_order_release);
        }
    }
    const bool wasEnabled = source.listeners > 0;
    source.listeners = std::max(source.listeners + by, 0);
    const bool isEnabled = source.listeners > 0;
    if (isEnabled != wasEnabled) {
        source.enable->setValue(0, 0, 0, isEnabled ? 1.0 : 0.0, context);
    }
}

void CAudioVizCollector::take(std::vector<CAudioVizDataMeter>& out)
{
    Buffer* buffer = finished_.exchange(nullptr, std::memory_order_acq_rel);
    if (!buffer) {
        return;
    }
    if (!isStale_.load(std::memory_order_acquire)) {
        const auto end = buffer->data.begin() + static_cast<std::ptrdiff_t>(buffer->count);
        out.insert(out.end(), buffer->data.begin(), end);
    }
    buffer->count = 0;
    free_.store(buffer, std::memory_order_release);
}

void CAudioVizCollector::reset()
{
    if (Buffer* unread = finished_.exchange(nullptr, std::memory_order_acq_rel)) {
        unread->count = 0;
        free_.store(unread, std::memory_order_release);
    }
    if (current_) {
        current_->count = 0;
    }
}

void CAudioVizCollector::beginBlock()
{
    if (!current_) {
        Buffers* const buffers = arriving_.exchange(nullptr, std::memory_order_acquire);
        if (!buffers) {
            return;
        }
        current_ = &(*buffers)[0];
        free_.store(&(*buffers)[1], std::memory_order_release);
    }
    if (isStale_.load(std::memory_order_acquire)) {
        reset();
        isStale_.store(false, std::memory_order_release);
    }
    if (current_->count == 0) {
        return;
    }
    if (Buffer* unread = finished_.exchange(nullptr, std::memory_order_acq_rel)) {
        append(*unread, *current_);
        current_->count = 0;
        finished_.store(unread, std::memory_order_release);
    } else if (Buffer* next = free_.exchange(nullptr, std::memory_order_acq_rel)) {
        finished_.store(current_, std::memory_order_release);
        current_ = next;
    }
}

// The oldest go where there is no room for all.
void CAudioVizCollector::append(Buffer& older, const Buffer& newer)
{
    const std::size_t kept = std::min(older.count, kBufferSize - newer.count);
    const auto at = [](auto& buffer, std::size_t index) {
        return buffer.data.begin() + static_cast<std::ptrdiff_t>(index);
    };
    std::copy(at(older, older.count - kept), at(older, older.count), at(older, 0));
    std::copy(at(newer, 0), at(newer, newer.count), at(older, kept));
    older.count = kept + newer.count;
}

void CAudioVizCollector::push(const CAudioVizDataMeter& data)
{
    if (!current_) {
        return;
    }
    if (current_->count == kBufferSize) {
        beginBlock();
    }
    if (current_->count == kBufferSize) {
        return; // a reader is at the other buffer
    }
    current_->data[current_->count++] = data;
}

} // namespace qel
