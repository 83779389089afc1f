// The states of a view.
#include "CViewBaseState.h"

#include "CViewState.h"
#include "NumberSyntax.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kMorphed[] = {"opacity", "width", "height"};
constexpr std::size_t kOpacity = 0;
constexpr const char* kDuration = "duration";
constexpr const char* kFadeDuration = "morph-duration";
constexpr const char* kColorState = "color-state";
constexpr const char* kImageRange = "image-set-range";
constexpr const char* kStateReady = "state-ready";

void keepFirst(CError& first, CError error)
{
    if (!first) {
        first = std::move(error);
    }
}

CString stateOf(const CAttrMap& parameters)
{
    const auto state = parameters.find("state");
    return state == parameters.end() ? CString() : state->second.toString();
}

bool isLookKey(const CString& key)
{
    return key == kColorState || key == kImageRange;
}

} // namespace

void CViewBaseState::buildClassInfo(CClassInfo& info)
{
    using Self = CViewBaseState;
    CViewBasePlacement::buildClassInfo(info);
    info.bind<&Self::durationSec_>(kDuration, 0.0);
    info.bind<&Self::fadeDurationSec_>(kFadeDuration, 0.0);
    info.bind<&Self::colorState_, &Self::attrLook>(kColorState, "");
    info.bind<&Self::imageRange_, &Self::attrLook>(kImageRange, "");
    info.handleEvent<&Self::eventSetState>("set-state");
    info.handleEvent<&Self::eventUnsetState>("unset-state");
}

CViewBaseState::CViewBaseState() : tick_(*this, [this] { eventStateReady(); }) {}

CError CViewBaseState::init()
{
    QEL_TRY(CViewBasePlacement::init(), getFullName());
    if (isRootView()) {
        viewContext_ = std::make_shared<CViewContext>();
    } else if (const auto* root = dynamic_cast<const CViewBaseState*>(&getRootView())) {
        viewContext_ = root->viewContext_;
    }
    fade_.from = fade_.to = {colorState_, imageRange_};
    return {};
}

void CViewBaseState::release()
{
    tick_.stop();
    CViewBasePlacement::release();
}

// --- states

bool CViewBaseState::isStateActive(const CString& name) const
{
    return std::ranges::find(activeStates_, name) != activeStates_.end();
}

CError CViewBaseState::setState(const CString& name, bool isImmediate)
{
    if (name.isEmpty() || isReleased() || isStateActive(name)) {
        return {};
    }
    activeStates_.push_back(name);
    return applyStates(isImmediate);
}

CError CViewBaseState::unsetState(const CString& name, bool isImmediate)
{
    if (isReleased() || !isStateActive(name)) {
        return {};
    }
    std::erase(activeStates_, name);
    return applyStates(isImmediate);
}

CError CViewBaseState::toggleState(const CString& name)
{
    return isStateActive(name) ? unsetState(name) : setState(name);
}

CError CViewBaseState::eventSetState(const CAttrMap& parameters)
{
    return setState(stateOf(parameters));
}

CError CViewBaseState::eventUnsetState(const CAttrMap& parameters)
{
    return unsetState(stateOf(parameters));
}

CError CViewBaseState::addState(CViewState& state)
{
    states_[state.getStateName()].push_back(&state);
    return onStateChanged(state);
}

CError CViewBaseState::removeState(CViewState& state)
{
    for (auto& [name, states] : states_) {
        std::erase(states, &state);
    }
    return onStateChanged(state);
}

CError CViewBaseState::onStateChanged(const CViewState& state)
{
    return isStateActive(state.getStateName()) ? applyStates(false) : CError();
}

// --- what the states make of the attributes

bool CViewBaseState::divertAttribute(const CString& key, const CAttrValue& value, CError& outError)
{
    if (ownWrite_ && *ownWrite_ == key) {
        ownWrite_ = nullptr; // what the handler of this one sets comes from outside again
        return false;
    }
    const auto entry = overrides_.find(key);
    if (entry == overrides_.end()) {
        return false;
    }
    entry->second.base = value;
    outError = applyStates(false);
    return true;
}

void CViewBaseState::gatherState(const CViewState& state, Gathered& gathered)
{
    for (const auto& [key, value] : state.getAttributes()) {
        if (CViewState::isOwnAttribute(key)) {
            continue;
        }
        if (key == kDuration || key == kFadeDuration) {
            double& duration = key == kDuration ? gathered.durationSec : gathered.fadeDurationSec;
            duration = value.toReal().value_or(duration);
            continue;
        }
        const auto [entry, isNew] = overrides_.try_emplace(key);
        if (isNew) {
            const CAttrValue* present = findAttr(key);
            entry->second.base = present ? Value(*present) : std::nullopt;
        }
        entry->second.isWanted = true;
        Value& result = gathered.values.try_emplace(key, entry->second.base).first->second;
        const CString before = result ? result->toString() : CString();
        const CString text = value.toString();
        if (text.startsWith("/")) {
            result = CAttrValue(text.substring(1));
        } else if (key == kColorState) {
            result = CAttrValue(before + text);
        } else {
            result = CAttrValue(CViewState::fillPlaceholder(text, before));
        }
    }
}

void CViewBaseState::gather(Gathered& gathered)
{
    gathered.durationSec = durationSec_;
    gathered.fadeDurationSec = fadeDurationSec_;
    for (auto& [key, entry] : overrides_) {
        entry.isWanted = false;
        gathered.values[key] = entry.base;
    }
    for (const CString& name : activeStates_) {
        if (const auto states = states_.find(name); states != states_.end()) {
            for (const CViewState* state : states->second) {
                gatherState(*state, gathered);
            }
        }
    }
}

CError CViewBaseState::applyStates(bool isImmediate)
{
    if (isReleased() || !viewContext_) {
        return {};
    }
    const CHold hold(*this);
    const std::int32_t round = ++round_;
    Gathered gathered;
    gather(gathered);
    if (isImmediate) {
        gathered.durationSec = gathered.fadeDurationSec = 0.0;
    }
    CError error = adopt(gathered, round);
    if (!isOutdated(round)) {
        forgetRestored();
        tick_.start(viewContext_->getTimer());
    }
    return error;
}

// Ends early where a handler has changed the states again, which has done everything anew.
CError CViewBaseState::adopt(const Gathered& gathered, std::int32_t round)
{
    CError first = adoptLook(gathered, round);
    for (const auto& [key, value] : gathered.values) {
        if (isOutdated(round)) {
            return first;
        }
        const auto* const morphed =
            std::ranges::find_if(kMorphed, [&key = key](const char* name) { return key == name; });
        if (morphed != std::end(kMorphed)) {
            keepFirst(first,
                      adoptNumber(static_cast<std::size_t>(morphed - kMorphed), value, gathered.durationSec));
        } else if (!isLookKey(key)) {
            keepFirst(first, write(key, value));
        }
    }
    return first;
}

CError CViewBaseState::adoptLook(const Gathered& gathered, std::int32_t round)
{
    CError first;
    isLookHeld_ = true;
    for (const char* const key : {kColorState, kImageRange}) {
        const auto entry = gathered.values.find(key);
        if (entry != gathered.values.end() && !isOutdated(round)) {
            keepFirst(first, write(key, entry->second));
        }
    }
    isLookHeld_ = false;
    if (!isOutdated(round)) {
        changeLook(gathered.fadeDurationSec);
    }
    return first;
}

CError CViewBaseState::adoptNumber(std::size_t index, const Value& value, double durationSec)
{
    const CString key = kMorphed[index];
    CStateMorph& morph = morphs_[index];
    // A view is opaque unless something else is said.
    const CString none = index == kOpacity ? "1" : "";
    const auto target = CStateNumber::parse(value ? value->toString() : none);
    if (!target) {
        morph.isRunning = false;
        return write(key, value);
    }
    const CString present = getAttrString(key, none);
    const auto presentNumber = CStateNumber::parse(present);
    const bool isThere =
        morph.isRunning ? target->isSameAs(morph.to) : presentNumber && target->isSameAs(*presentNumber);
    if (isThere) {
        return {};
    }
    morph.from = CStateNumber::parseAny(present).value;
    morph.to = *target;
    morph.startSec = CViewContext::getTimeSec();
    morph.endSec = morph.startSec + durationSec;
    morph.isRunning = durationSec > 0.0;
    return morph.isRunning ? CError() : write(key, value ? value : Value(target->toValue()));
}

CError CViewBaseState::write(const CString& key, const Value& value)
{
    const CAttrValue* const present = findAttr(key);
    if (!value) {
        return removeAttribute(key);
    }
    if (present && present->toString() == value->toString()) {
        return {};
    }
    ownWrite_ = &key;
    CError error = setAttribute(key, *value, true);
    ownWrite_ = nullptr;
    return error;
}

bool CViewBaseState::isMorphing(const CString& key) const
{
    for (std::size_t i = 0; i < kMorphs; ++i) {
        if (morphs_[i].isRunning && key == kMorphed[i]) {
            return true;
        }
    }
    return false;
}

// What is back at its base can be set directly again.
void CViewBaseState::forgetRestored()
{
    std::erase_if(overrides_,
                  [this](const auto& entry) { return !entry.second.isWanted && !isMorphing(entry.first); });
}

// --- motion

CError CViewBaseState::attrLook()
{
    if (!isLookHeld_ && viewContext_) {
        changeLook(0.0);
    }
    return {};
}

void CViewBaseState::changeLook(double durationSec)
{
    const CViewLook look{colorState_, imageRange_};
    if (look == fade_.to) {
        return;
    }
    fade_.start(look, CViewContext::getTimeSec(), durationSec);
    onLookChanged();
    onFadeMoved();
    markLook();
}

void CViewBaseState::eventStateReady()
{
    const double now = CViewContext::getTimeSec();
    const std::int32_t round = round_;
    for (std::size_t i = 0; i < kMorphs && !isOutdated(round); ++i) {
        CStateMorph& morph = morphs_[i];
        if (morph.isRunning) {
            const CAttrValue value = morph.at(now).toValue();
            morph.isRunning = now < morph.endSec;
            if (CError error = write(kMorphed[i], value)) {
                traceError(error);
            }
        }
    }
    if (isReleased()) {
        return;
    }
    if (fade_.isRunning) {
        fade_.move(now);
        if (!fade_.isRunning) {
            onLookChanged();
        }
        onFadeMoved();
    }
    markLook();
    const bool isMorphRunning =
        std::ranges::any_of(morphs_, [](const CStateMorph& morph) { return morph.isRunning; });
    if (isMorphRunning || fade_.isRunning || isOutdated(round)) {
        return;
    }
    tick_.stop();
    forgetRestored();
    if (CError error = fireEvent(kStateReady, {})) {
        traceError(error);
    }
}

} // namespace qel
