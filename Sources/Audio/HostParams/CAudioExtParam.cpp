// A parameter as the host sees it: one number from 0 to 1.
#include "CAudioExtParam.h"

#include "CAudioExtParamHostBridge.h"
#include "CAudioParamCollector.h"
#include "CAudioParamConverterEnum.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace qel {

namespace {

// Hosts carry their numbers in single precision. What comes back from one within this is what went there.
constexpr double kHostPrecision = 1e-6;
constexpr int kMaxTellings = 4;

} // namespace

void CAudioExtParam::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAudioExtParam::extName_, &CAudioExtParam::attrExtName>("ext-name", CString());
    info.bind<&CAudioExtParam::elementIndex_>("element-index", 0);
    info.bind<&CAudioExtParam::group_>("group", 0);
    info.bind<&CAudioExtParam::collectorPath_>("param-collector", "");
    info.bind<&CAudioExtParam::paramName_>("param-name", "");
}

CError CAudioExtParam::init()
{
    QEL_TRY(CObject::init(), getFullName());
    CAudioParamCollector* collector = nullptr;
    QEL_TRY(require(collector, collectorPath_,
                    "@qelstr_CAudioExtParam_init_NoParamCollector No parameter collector '%1' found."),
            getFullName());
    param_ = &collector->getParam(paramName_);
    listener_.attach(collector);
    refresh(false);
    return {};
}

CError CAudioExtParam::attrExtName()
{
    if (extName_.length() > kMaxNameLength) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioExtParam_attrExtName_LongName Externalized parameter name '%1' is too long",
                 extName_);
    }
    return {};
}

void CAudioExtParam::release()
{
    listener_.attach(nullptr);
    bridge_.store(nullptr, std::memory_order_release);
    CObject::release();
}

void CAudioExtParam::setHostBridge(CAudioExtParamHostBridge* bridge, std::int32_t index)
{
    index_ = index;
    bridge_.store(bridge, std::memory_order_release);
}

CAudioExtParam::Projection::Projection(std::shared_ptr<const CAudioParamInfo> declaration,
                                       std::int32_t ofElement)
    : info(std::move(declaration)), converter(info->converters[static_cast<std::size_t>(ofElement)]),
      element(ofElement), curve(converter->curve(*info, element)), isSingleNumber(info->esize == 1)
{
    const auto at = static_cast<std::size_t>(element);
    std::tie(low, high) = std::minmax(info->minValues[at], info->maxValues[at]);
    stepCount = isEnumeration() ? static_cast<std::int32_t>(std::lround(high - low)) : 0;
}

double CAudioExtParam::Projection::valueOf(double norm) const
{
    return std::clamp(curve.valueAt(std::clamp(norm, 0.0, 1.0)), low, high);
}

double CAudioExtParam::getNormalized() const
{
    const Projection* now = projection();
    if (now && posted_.getState().isUnsettled()) {
        const double norm = now->normOf(now->valueOf(posted_.getLatest()));
        if (!std::isnan(norm)) {
            return norm;
        }
    }
    return norm_.load(std::memory_order_acquire);
}

void CAudioExtParam::postNormalized(double norm)
{
    const Projection* now = projection();
    if (now && !std::isnan(norm) && !isKnownToHost(*now, norm)) {
        posted_.put(norm);
    }
}

// Hosts send back what they were told, some of them all values whenever a window opens. As what it was told
// is a float, the value would move a little, and no longer be that of its preset.
bool CAudioExtParam::isKnownToHost(const Projection& now, double norm) const
{
    // A sweep, whose last number was told as it had come: a smooth curve leads there and back.
    const bool hasMoved = !now.curve.snaps() && posted_.getState().isUnsettled() &&
                          std::fabs(norm - std::clamp(posted_.getLatest(), 0.0, 1.0)) > kHostPrecision;
    return !hasMoved && static_cast<float>(norm) == static_cast<float>(getNormalized());
}

void CAudioExtParam::applyPosted(double timeSec)
{
    if (!posted_.getState().isWaiting()) {
        return; // nearly always, and cheaper to see than by take()
    }
    const Projection* now = projection();
    if (!now || !goesByAudio(*now)) {
        return;
    }
    const std::optional<double> norm = posted_.take();
    // Behind what control threads have sent so far, or that would overwrite it at the next block.
    if (norm && (param_->audioSide().isOverridden() ||
                 !param_->getCollector().changeFromAudio(*param_, now->valueOf(*norm), timeSec))) {
        posted_.putBack();
    }
}

void CAudioExtParam::takePosted()
{
    if (const std::optional<double> norm = posted_.take()) {
        write(EWrite::kSend, *norm, 0.0);
    }
}

void CAudioExtParam::showPosted()
{
    const Projection* now = projection();
    if (!now || !goesByAudio(*now)) {
        takePosted();
        return;
    }
    write(EWrite::kShow, 0.0, 0.0);
    if (settleIfOvertaken()) {
        tellHost();
    }
}

// Another's write can arrive on the audio side right behind the host's value, which then never comes back. A
// value that was there at the last call already has had its time.
bool CAudioExtParam::settleIfOvertaken()
{
    const CLock lock(param_->getLock());
    const CAudioParamMailbox::State state = posted_.getState();
    const bool isOld = std::exchange(shownSequence_, state.getSequence()) == state.getSequence();
    const bool isOvertaken = isOld && state.isUnsettled() && !state.isWaiting();
    return isOvertaken && !param_->isChangedByAudio() && refresh(false);
}

void CAudioExtParam::setNormalized(double norm, double timeSec)
{
    if (!std::isnan(norm)) {
        posted_.drop();
        write(EWrite::kSend, norm, timeSec);
    }
}

void CAudioExtParam::write(EWrite way, double norm, double timeSec)
{
    const Projection* now = projection();
    if (!now) {
        return;
    }
    CAudioParamContext context(CAudioParamOrigin::kHost);
    context.sender = &listener_;
    context.isKnownToAudio = way == EWrite::kShow;
    const CAudioParamContext::Scope scope(context);
    const CLock lock(param_->getLock());
    if (way == EWrite::kShow) {
        // What the audio thread has taken by now comes back from there. It takes first and then looks for
        // events on their way, so what is still here goes behind all that was written so far.
        if (!posted_.getState().isWaiting()) {
            return;
        }
        norm = posted_.getLatest();
    }
    param_->setValue(group_, 0, elementIndex_, now->valueOf(norm), context, timeSec);
    refresh(false);
}

void CAudioExtParam::onParamChange(const CAudioParamNotice& notice)
{
    if (notice.param != param_ || !notice.change.touches(group_, 0)) {
        return;
    }
    const bool isFromAudio = notice.origin == CAudioParamOrigin::kAudio;
    if (!isFromAudio) {
        // What the host had left before counts no more. While nothing is processed it would wait, and come
        // back at each look at it.
        posted_.drop();
    }
    const bool isChanged = refresh(isFromAudio);
    if (isChanged && notice.origin != CAudioParamOrigin::kHost) {
        tellHost();
    }
}

bool CAudioExtParam::refresh(bool isFromAudio)
{
    // Reading and storing within the lock, or an older value could overwrite a newer one.
    const CLock lock(param_->getLock());
    refreshProjection();
    const Projection* now = projection();
    const double value = now ? param_->getValue(group_, 0, elementIndex_) : 0.0;
    const CAudioParamMailbox::State state = posted_.getState();
    const double known = getNormalized();
    bool isHostsOwn = false;
    if (now && state.isUnsettled()) {
        isHostsOwn = isFromAudio && value == now->valueOf(posted_.getLatest());
        if (isFromAudio && !isHostsOwn) {
            return false;
        }
    }
    const double norm = now ? now->normOf(value) : 0.0;
    if (std::isnan(norm)) {
        return false;
    }
    norm_.store(norm, std::memory_order_release);
    // With nothing left in the mailbox, another's write has overtaken what was on its way.
    if (isHostsOwn || !state.isWaiting()) {
        posted_.settle(state);
    }
    return norm != known && !isHostsOwn;
}

void CAudioExtParam::refreshProjection()
{
    if (!param_->hasInfo()) {
        return;
    }
    const CAudioParamInfo& info = param_->getInfo();
    const Projection* now = projection();
    if (now && now->info->name == info.name && now->info->hasSameFormat(info)) {
        return;
    }
    const auto at = static_cast<std::size_t>(elementIndex_);
    if (elementIndex_ < 0 || at >= info.converters.size() || at >= info.minValues.size() ||
        at >= info.maxValues.size()) {
        projection_.store(nullptr, std::memory_order_release);
        return;
    }
    auto next = std::make_unique<Projection>(param_->shareInfo(), elementIndex_);
    projection_.store(next.get(), std::memory_order_release);
    projections_.push_back(std::move(next)); // other threads may still use the one before
}

void CAudioExtParam::tellHost()
{
    CAudioExtParamHostBridge* bridge = bridge_.load(std::memory_order_acquire);
    if (!bridge) {
        return;
    }
    // Two threads may tell at once, and the slower of them must not have the last word with an older value. A
    // host that answers each time with the next value of a ramp has the last word itself.
    bool isOutdated = true;
    for (int times = 0; isOutdated && times < kMaxTellings; ++times) {
        const double told = getNormalized();
        bridge->setParameterAutomated(index_, told);
        isOutdated = std::fabs(getNormalized() - told) > kHostPrecision;
    }
}

CString CAudioExtParam::textOf(const Projection& projection, double value,
                               CAudioParamConverter::TextMode mode) const
{
    const CLock lock(param_->getLock());
    return projection.converter->valueToText(*projection.info, elementIndex_, value,
                                             &param_->getCurrent().getPool(), mode);
}

CString CAudioExtParam::getDisplay(CAudioParamConverter::TextMode mode) const
{
    const Projection* now = projection();
    if (!now) {
        return {};
    }
    // A value on its way from the audio side is not in the parameter yet.
    const double value = posted_.getState().isUnsettled() ? now->valueOf(posted_.getLatest())
                                                          : param_->getValue(group_, 0, elementIndex_);
    return textOf(*now, value, mode);
}

CString CAudioExtParam::getDisplayOf(double norm, CAudioParamConverter::TextMode mode) const
{
    const Projection* now = projection();
    return now && !std::isnan(norm) ? textOf(*now, now->valueOf(norm), mode) : CString();
}

bool CAudioExtParam::Projection::isEnumeration() const
{
    return dynamic_cast<const CAudioParamConverterEnum*>(converter) != nullptr;
}

std::int32_t CAudioExtParam::getStepCount() const
{
    const Projection* now = projection();
    return now ? now->stepCount : 0;
}

std::optional<double> CAudioExtParam::Projection::normOfState(const CString& text) const
{
    using TextMode = CAudioParamConverter::TextMode;
    if (!isEnumeration()) {
        return std::nullopt;
    }
    const auto at = static_cast<std::size_t>(element);
    for (double value = info->minValues[at]; value <= info->maxValues[at]; value += 1.0) {
        for (const TextMode mode : {TextMode::kNormal, TextMode::kShort}) {
            if (converter->valueToText(*info, element, value, nullptr, mode) == text) {
                return normOf(value);
            }
        }
    }
    return std::nullopt;
}

std::optional<double> CAudioExtParam::getNormalizedOf(const CString& text) const
{
    const Projection* now = projection();
    if (!now) {
        return std::nullopt;
    }
    if (const std::optional<double> state = now->normOfState(text)) {
        return state;
    }
    bool isNumber = true;
    const double value = now->converter->textToValueClamped(*now->info, elementIndex_, text, &isNumber);
    const double norm = now->normOf(value);
    return isNumber && std::isfinite(norm) ? std::optional(norm) : std::nullopt;
}

CString CAudioExtParam::getLabel() const
{
    const Projection* now = projection();
    return now ? now->converter->getLabel() : CString();
}

CString CAudioExtParam::getVisualName() const
{
    const CLock lock(param_->getLock());
    return param_->hasInfo() ? param_->getInfo().visualName : CString();
}

} // namespace qel
