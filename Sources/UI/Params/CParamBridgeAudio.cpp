// A parameter of the audio side in the tree of the interface.
#include "CParamBridgeAudio.h"

#include "CParamEdit.h"
#include "ChannelLayout.h"
#include "DisplayNumber.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

void CParamBridgeAudio::buildClassInfo(CClassInfo& info)
{
    using Self = CParamBridgeAudio;
    CParamBridge::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::param_>("param", "");
}

CError CParamBridgeAudio::init()
{
    QEL_TRY(CParamBridge::init(), getFullName());
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CParamBridgeAudio_init_NoInterfaceClient No interfacing object '%1' found."),
            getFullName());
    client_->addParamListener(param_, *this);
    source_ = client_->findParam(param_);
    // Controls that join find the value, so that the first picture is right.
    client_->takeWaiting();
    return {};
}

void CParamBridgeAudio::release()
{
    if (source_) {
        client_->removeParamListener(*this);
        for (const CHeld& held : std::exchange(held_, {})) {
            traceError(tellHost(held.group, held.element, false));
        }
    }
    CParamBridge::release();
}

void CParamBridgeAudio::onParamUpdate(const CString&)
{
    const bool isKnown = getInfo() != nullptr;
    if (isKnown != wasKnown_) {
        wasKnown_ = isKnown;
        if (isKnown) {
            defaults_.fillWithDefaults(source_->info);
        }
        traceError(tellInfo());
    }
    for (CHeld& held : held_) {
        if (const double value = readValue(held.group, held.element); value == held.sent) {
            held.shown = value;
        }
    }
    traceError(tellValues());
}

// --- values

const CAudioParamInfo* CParamBridgeAudio::getInfo() const
{
    return source_ && source_->info.valid ? &source_->info : nullptr;
}

std::int32_t CParamBridgeAudio::groupOf(std::int32_t group) const
{
    return source_->info.isSingleGroup ? 0 : std::max(group, 0);
}

std::int32_t CParamBridgeAudio::getElementCount(std::int32_t group) const
{
    if (!getInfo()) {
        return 0;
    }
    const std::int32_t stored = source_->values.getCount(groupOf(group));
    return (stored > 0 ? stored : source_->values.getFillCount()) * source_->info.esize;
}

double CParamBridgeAudio::readValue(std::int32_t group, std::int32_t element) const
{
    const std::int32_t esize = source_->info.esize;
    return source_->values.get(group, element / esize, element % esize);
}

double CParamBridgeAudio::getValue(std::int32_t group, std::int32_t element) const
{
    if (!getInfo()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::int32_t counted = groupOf(group);
    for (const CHeld& held : held_) {
        if (held.group == counted && held.element == element) {
            return held.shown;
        }
    }
    return readValue(counted, element);
}

double CParamBridgeAudio::getDefault(std::int32_t group, std::int32_t element) const
{
    if (!getInfo()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::int32_t esize = source_->info.esize;
    return defaults_.get(groupOf(group), element / esize, element % esize);
}

CString CParamBridgeAudio::getText(std::int32_t group, std::int32_t element,
                                   CAudioParamConverter::TextMode mode) const
{
    if (!getInfo()) {
        return {};
    }
    return source_->info.isString() ? source_->values.getString(groupOf(group), element)
                                    : getTextOf(element, getValue(group, element), mode);
}

CString CParamBridgeAudio::getTextOf(std::int32_t element, double value,
                                     CAudioParamConverter::TextMode mode) const
{
    const CAudioParamInfo* const info = getInfo();
    if (!info) {
        return {};
    }
    const std::int32_t index = element % info->esize;
    return info->converters[static_cast<std::size_t>(index)]->valueToText(*info, index, value,
                                                                          &source_->values.getPool(), mode);
}

// --- gestures

CParamBridgeAudio::CHeld* CParamBridgeAudio::findHeld(std::int32_t group, std::int32_t element)
{
    const auto held = std::find_if(held_.begin(), held_.end(), [&](const CHeld& one) {
        return one.group == group && one.element == element;
    });
    return held == held_.end() ? nullptr : &*held;
}

CError CParamBridgeAudio::tellHost(std::int32_t group, std::int32_t element, bool begins)
{
    return client_->send(
        record::CEdit{.param = param_, .group = group, .element = element, .begins = begins});
}

CError CParamBridgeAudio::beginEdit(std::int32_t group, std::int32_t element)
{
    if (!getInfo()) {
        return {};
    }
    const std::int32_t counted = groupOf(group);
    if (CHeld* held = findHeld(counted, element)) {
        ++held->holders;
        return {};
    }
    held_.push_back({.group = counted,
                     .element = element,
                     .holders = 1,
                     .shown = readValue(counted, element),
                     .sent = std::numeric_limits<double>::quiet_NaN()});
    return tellHost(counted, element, true);
}

CError CParamBridgeAudio::endEdit(std::int32_t group, std::int32_t element)
{
    const std::int32_t counted = getInfo() ? groupOf(group) : group;
    CHeld* const held = findHeld(counted, element);
    if (!held || --held->holders > 0) {
        return {};
    }
    CError error = tellHost(counted, element, false);
    // The last movement may still be on its way back: without it the control would jump there and back.
    client_->takeWaiting();
    std::erase_if(held_, [&](const CHeld& one) { return one.group == counted && one.element == element; });
    QEL_TRY(tellValues(), getFullName());
    return error;
}

// --- changes

CString CParamBridgeAudio::stepName(const char* action, std::int32_t group) const
{
    const CString& name = source_->info.visualName;
    const CString where = source_->info.isSingleGroup
                              ? CString()
                              : CString(" (") + layout::groupName(*client_, group) + CString(")");
    return name + where + CString(action);
}

record::CParamWrite CParamBridgeAudio::recordOf(const CWrite& write, std::int32_t group)
{
    const CAudioParamInfo& info = source_->info;
    const std::int32_t esize = info.esize;
    record::CParamWrite record{.param = param_,
                               .group = group,
                               .start = write.element / esize,
                               .resize = write.isEnd,
                               .values = {},
                               .texts = {write.texts.begin(), write.texts.end()}};
    if (info.isString()) {
        return record;
    }
    const auto count = static_cast<std::int32_t>(write.values.size());
    const std::int32_t first = record.start * esize;
    const std::int32_t end = (write.element + count + esize - 1) / esize * esize;
    for (std::int32_t element = first; element < end; ++element) {
        const std::int32_t given = element - write.element;
        if (given < 0 || given >= count) {
            record.values.push_back(readValue(group, element)); // the rest of an entry
            continue;
        }
        const auto index = static_cast<std::size_t>(element % esize);
        const auto [low, high] = std::minmax(info.minValues[index], info.maxValues[index]);
        const double value = std::clamp(write.values[static_cast<std::size_t>(given)], low, high);
        record.values.push_back(info.isDiscrete ? roundHalfAway(value) : value);
        if (CHeld* held = findHeld(group, element)) {
            held->sent = record.values.back();
        }
    }
    return record;
}

bool CParamBridgeAudio::isWholeWriteHeld(const CWrite& write, std::int32_t group)
{
    const auto count = static_cast<std::int32_t>(std::max(write.values.size(), write.texts.size()));
    for (std::int32_t element = write.element; element < write.element + count; ++element) {
        if (!findHeld(group, element)) {
            return false;
        }
    }
    return true;
}

CError CParamBridgeAudio::write(const CWrite& write, CParamEdit* edit)
{
    const bool isNumber = std::none_of(write.values.begin(), write.values.end(),
                                       [](double value) { return std::isnan(value); });
    if (!getInfo() || write.element < 0 || !isNumber) {
        return {};
    }
    const std::int32_t group = groupOf(write.group);
    const bool isHeld = isWholeWriteHeld(write, group);
    const CString step = write.isUndoDisabled ? CString() : stepName(" change", group);
    // One source for all gestures of the parameter: turned again before anything else, a knob goes on with
    // its step.
    const std::int32_t source = getObjectNumber();
    if (edit) {
        edit->add(*client_, step, source, isHeld, recordOf(write, group));
        return {};
    }
    CParamEdit own;
    own.add(*client_, step, source, isHeld, recordOf(write, group));
    if (isHeld) {
        return own.send();
    }
    // A click is a gesture too.
    QEL_TRY(tellHost(group, write.element, true), getFullName());
    CError error = own.send();
    QEL_TRY(tellHost(group, write.element, false), getFullName());
    return error;
}

CError CParamBridgeAudio::resetToDefault(std::int32_t group, std::int32_t element, bool isUndoDisabled)
{
    if (!getInfo()) {
        return {};
    }
    const std::int32_t counted = groupOf(group);
    // Of a held element the default is what is written from here.
    QEL_TRY(beginEdit(counted, element), getFullName());
    findHeld(counted, element)->sent = getDefault(counted, element);
    CError error = client_->send(
        record::CResetParams{.stepName = isUndoDisabled ? CString() : stepName(" reset", counted),
                             .params = {param_},
                             .group = counted,
                             .entry = element / source_->info.esize,
                             .toInitial = false});
    QEL_TRY(endEdit(counted, element), getFullName());
    return error;
}

} // namespace qel
