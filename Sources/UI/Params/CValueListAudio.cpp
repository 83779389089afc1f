// Texts that come from the audio side.
#include "CValueListAudio.h"

#include "CAudioParamInfo.h"
#include "CParamBridgeAudio.h"
#include "CParamGroupSelector.h"
#include "CUIParam.h"
#include "ChannelLayout.h"
#include "DisplayNumber.h"

#include <algorithm>

namespace qel {

enum class CValueListAudio::Mode : std::int32_t
{
    kManual,
    kParamValues,
    kEnumValue,
    kMinMax,
    kIns,
    kOuts,
    kChannels,
    kGroups,
    kCurrentGroup,
    kRoutingLabels,
    kActiveChannels,
    kActiveGroups
};

enum class CValueListAudio::RoutingLabels : std::int32_t
{
    kGroup,
    kInputs,
    kOutputs
};

namespace {

using TextMode = CAudioParamConverter::TextMode;

constexpr const char* kSourceChanged = "source-changed";
constexpr const char* kNotRouted = "---";
// What converters call a state without a name.
constexpr const char* kReserve = "Reserve";

template <class T>
struct Name
{
    const char* text;
    T value;
};

// False if there is no such name.
template <class T, std::size_t N>
bool lookUp(const Name<T> (&names)[N], const CString& text, T& out)
{
    for (const auto& name : names) {
        if (text == name.text) {
            out = name.value;
            return true;
        }
    }
    return false;
}

} // namespace

void CValueListAudio::buildClassInfo(CClassInfo& info)
{
    using Self = CValueListAudio;
    CValueList::buildClassInfo(info);
    info.bind<&Self::modeName_>("mode", "manual");
    info.bind<&Self::bridgePath_>("bridge", "");
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::selectorPath_>("group-selector", "");
    info.bind<&Self::format_, &Self::onListAttr>("format", "%1");
    info.bind<&Self::formatId_>("format-id", "normal");
    info.bind<&Self::valueCount_, &Self::onListAttr>("value-count", 11);
    info.bind<&Self::minValue_, &Self::onListAttr>("min-value", std::nullopt);
    info.bind<&Self::maxValue_, &Self::onListAttr>("max-value", std::nullopt);
    info.bind<&Self::isHideReserve_, &Self::onListAttr>("is-hide-reserve", false);
    info.bind<&Self::routingLabelMode_>("routing-label-mode", "group");
    info.handleEvent<&Self::onSourceChanged>(kSourceChanged);
}

// --- life

CError CValueListAudio::init()
{
    // The items follow once it is known what they are.
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(readMode(), getFullName());
    QEL_TRY(findSources(), getFullName());
    return updateValues();
}

CError CValueListAudio::readMode()
{
    static constexpr Name<Mode> kModes[] = {
        {"manual", Mode::kManual},
        {"audio-param-values", Mode::kParamValues},
        {"audio-enum-value", Mode::kEnumValue},
        {"audio-min-max", Mode::kMinMax},
        {"audio-ins", Mode::kIns},
        {"audio-outs", Mode::kOuts},
        {"audio-channels", Mode::kChannels},
        {"audio-groups", Mode::kGroups},
        {"audio-curgroup", Mode::kCurrentGroup},
        {"audio-routing-labels", Mode::kRoutingLabels},
        {"active-channels", Mode::kActiveChannels},
        {"active-groups", Mode::kActiveGroups},
    };
    static constexpr Name<RoutingLabels> kRoutingModes[] = {
        {"group", RoutingLabels::kGroup},
        {"inputs", RoutingLabels::kInputs},
        {"outputs", RoutingLabels::kOutputs},
    };
    static constexpr Name<TextMode> kFormats[] = {
        {"normal", TextMode::kNormal},
        {"automation-string", TextMode::kShort},
        {"knob-circle", TextMode::kCompact},
    };
    if (!lookUp(kModes, modeName_, mode_)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CValueListAudio_init_InvalidMode Invalid value list mode specified: %1", modeName_);
    }
    if (!lookUp(kRoutingModes, routingLabelMode_, routingLabels_)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CValueListAudio_init_InvalidRoutingLabelMode Invalid routing label mode specified: "
                 "%1",
                 routingLabelMode_);
    }
    if (!lookUp(kFormats, formatId_, textMode_)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CValueListAudio_init_InvalidFormat Invalid value format specified: %1", formatId_);
    }
    return {};
}

CError CValueListAudio::findSources()
{
    if (!selectorPath_.isEmpty()) {
        QEL_TRY(require(selector_, selectorPath_,
                        "@qelstr_CValueListAudio_init_NoGroupSelector Unable to locate group selector: %1"),
                getFullName());
        listenObject(selectorPath_, CParamGroupSelector::kGroupChange, kSourceChanged);
    }
    bridge_ = dynamic_cast<CParamBridge*>(findObject(bridgePath_));
    if (bridge_) {
        bridge_->addListener(*this);
    }
    const auto* audioBridge = dynamic_cast<const CParamBridgeAudio*>(bridge_);
    client_ = clientPath_.isEmpty() && audioBridge
                  ? &audioBridge->getClient()
                  : dynamic_cast<CAudioInterfaceClient*>(findObject(clientPath_));
    if (!client_ || !needsClient()) {
        return {}; // told when the list is made
    }
    for (const char* event :
         {"update-io-channel-counts", "update-internal-channel-count", "update-group-count"}) {
        listenObject(client_->getFullName(), event, kSourceChanged);
    }
    watch({layout::kInChannelNames, layout::kGroupNames, layout::kInRouting, layout::kOutRouting,
           layout::kGrouping});
    return {};
}

void CValueListAudio::watch(std::initializer_list<const char*> params)
{
    watched_ = params;
    for (const char* param : params) {
        client_->addParamListener(param, *this);
    }
    client_->takeWaiting();
}

void CValueListAudio::release()
{
    if (!watched_.empty()) {
        client_->removeParamListener(*this);
    }
    if (bridge_) {
        bridge_->removeListener(*this);
        bridge_ = nullptr;
    }
    CValueList::release();
}

CError CValueListAudio::onParamAdded(CUIParam& param)
{
    uiParam_ = &param;
    return {};
}

CError CValueListAudio::onParamRemoved(CUIParam&)
{
    uiParam_ = nullptr;
    return {};
}

CError CValueListAudio::onBridgeValues()
{
    // States and scales are those of the declaration.
    return mode_ == Mode::kParamValues ? updateValues() : CError();
}

void CValueListAudio::onParamUpdate(const CString&)
{
    traceError(updateValues());
}

// --- items

bool CValueListAudio::needsClient() const
{
    return mode_ >= Mode::kIns;
}

bool CValueListAudio::isLayoutKnown() const
{
    return client_->getEnvironment().internalChannels > 0 &&
           std::all_of(watched_.begin(), watched_.end(),
                       [this](const char* param) { return client_->findParam(param)->isKnown; });
}

std::int32_t CValueListAudio::currentGroup() const
{
    return selector_ ? selector_->getGroup() : 0;
}

void CValueListAudio::add(Items& out, const CString& text, std::int32_t value, const CString& unit) const
{
    out.push_back({.text = formatMessage(format_, {text, unit}), .subListId = {}, .value = value});
}

CError CValueListAudio::collect(Items& out, bool& outIsReady)
{
    if (mode_ == Mode::kManual) {
        return CValueList::collect(out, outIsReady);
    }
    if (!needsClient()) {
        outIsReady = collectFromParam(out);
        return {};
    }
    if (!client_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CValueListAudio_updateValues_NoInterfaceClient Unable to locate interface client.");
    }
    outIsReady = isLayoutKnown();
    if (outIsReady && mode_ == Mode::kRoutingLabels) {
        collectRouting(out);
    } else if (outIsReady) {
        collectLayout(out);
    }
    return {};
}

bool CValueListAudio::collectFromParam(Items& out) const
{
    if (mode_ == Mode::kParamValues && uiParam_) {
        for (std::int32_t i = 0; i < uiParam_->getElementCount(); ++i) {
            add(out, uiParam_->getText(i, textMode_), i, uiParam_->getUnit(i));
        }
        return true;
    }
    if (!bridge_ || !bridge_->getInfo()) {
        return false;
    }
    switch (mode_) {
    case Mode::kParamValues:
        collectParamValues(out);
        break;
    case Mode::kEnumValue:
        collectStates(out);
        break;
    default:
        collectScale(out);
        break;
    }
    return true;
}

void CValueListAudio::collectParamValues(Items& out) const
{
    const std::int32_t group = currentGroup();
    for (std::int32_t i = 0; i < bridge_->getElementCount(group); ++i) {
        add(out, bridge_->getText(group, i, textMode_), i, bridge_->getUnit(i));
    }
}

void CValueListAudio::collectStates(Items& out) const
{
    const CAudioParamInfo& info = *bridge_->getInfo();
    const auto [low, high] = std::minmax(info.minValues[0], info.maxValues[0]);
    const auto last = static_cast<std::int32_t>(roundHalfAway(high));
    for (auto state = static_cast<std::int32_t>(roundHalfAway(low)); state <= last; ++state) {
        const CString text = bridge_->getTextOf(0, state, textMode_);
        if (!isHideReserve_ || !(text == kReserve)) {
            add(out, text, state);
        }
    }
}

void CValueListAudio::collectScale(Items& out) const
{
    double from = 0.0;
    double to = 1.0;
    const auto readEnd = [this](const std::optional<CString>& text, double& norm) {
        double value = 0.0;
        if (text && bridge_->parseText(0, *text, value)) {
            norm = bridge_->toNorm(0, value);
        }
    };
    readEnd(minValue_, from);
    readEnd(maxValue_, to);
    for (std::int32_t i = 0; i < valueCount_; ++i) {
        const double part = valueCount_ > 1 ? static_cast<double>(i) / (valueCount_ - 1) : 0.0;
        const double value = bridge_->toValue(0, from + part * (to - from));
        add(out, bridge_->getTextOf(0, value, textMode_), i, bridge_->getUnit(0));
    }
}

bool CValueListAudio::hasInput(std::int32_t channel)
{
    const std::int32_t input = layout::inputOf(*client_, channel);
    return input >= 0 && input < client_->getEnvironment().hostInputs;
}

void CValueListAudio::collectLayout(Items& out)
{
    const record::CEnvironment& environment = client_->getEnvironment();
    const auto addAll = [&](std::int32_t count, auto&& textOf) {
        for (std::int32_t i = 0; i < count; ++i) {
            add(out, textOf(i), i);
        }
    };
    std::vector<bool> activeGroups(static_cast<std::size_t>(std::max(environment.groups, 0)));
    switch (mode_) {
    case Mode::kIns:
        return addAll(environment.hostInputs, [&](std::int32_t i) { return layout::inputName(*client_, i); });
    case Mode::kOuts:
        return addAll(environment.hostOutputs, [](std::int32_t i) { return layout::outputName(i); });
    case Mode::kChannels:
        return addAll(environment.internalChannels, [](std::int32_t i) { return CString::number(i + 1); });
    case Mode::kGroups:
        return addAll(environment.groups, [&](std::int32_t i) { return layout::groupName(*client_, i); });
    case Mode::kCurrentGroup:
        return add(out, layout::groupName(*client_, currentGroup()), currentGroup());
    default:
        break;
    }
    for (std::int32_t channel = 0; channel < environment.internalChannels; ++channel) {
        if (!hasInput(channel)) {
            continue;
        }
        if (mode_ == Mode::kActiveChannels) {
            add(out, layout::inputName(*client_, layout::inputOf(*client_, channel)), channel);
        } else if (const auto group = static_cast<std::size_t>(layout::groupOf(*client_, channel));
                   group < activeGroups.size() && !activeGroups[group]) {
            activeGroups[group] = true;
        }
    }
    for (std::size_t group = 0; group < activeGroups.size(); ++group) {
        if (activeGroups[group]) {
            const auto index = static_cast<std::int32_t>(group);
            add(out, layout::groupName(*client_, index), index);
        }
    }
}

void CValueListAudio::collectRouting(Items& out)
{
    const record::CEnvironment& environment = client_->getEnvironment();
    for (std::int32_t channel = 0; channel < environment.internalChannels; ++channel) {
        const std::int32_t input = layout::inputOf(*client_, channel);
        const std::int32_t output = layout::outputOf(*client_, channel);
        switch (routingLabels_) {
        case RoutingLabels::kGroup:
            if (hasInput(channel) && layout::groupOf(*client_, channel) == currentGroup()) {
                add(out, layout::inputName(*client_, input), channel);
            }
            break;
        case RoutingLabels::kInputs:
            add(out, input < 0 ? CString(kNotRouted) : layout::inputName(*client_, input), channel);
            break;
        case RoutingLabels::kOutputs:
            add(out, output < 0 ? CString(kNotRouted) : layout::outputName(output), channel);
            break;
        }
    }
}

} // namespace qel
