// What a meter hears of the audio side.
#include "CLevelMeterListener.h"

#include "CDynamicList.h"
#include "CLevelMeterBase.h"
#include "CNotifyServer.h"

#include <algorithm>

namespace qel {

namespace {

constexpr double kLeastTimeoutSec = 0.01;
constexpr const char* kListUpdate = "audio-channels-list-update";

} // namespace

void CLevelMeterListener::buildClassInfo(CClassInfo& info)
{
    using Self = CLevelMeterListener;
    CObject::buildClassInfo(info);
    info.bind<&Self::vizName_>("viz-name", "");
    info.bind<&Self::exchangePath_>("viz-exchange", "ui.viz-exchange");
    info.bind<&Self::listPath_>("audio-channels-list", "");
    info.bind<&Self::timeoutSec_>("inactive-timeout", 0.25);
    info.bind<&Self::intervalSec_>("interval", 0.0);
    info.handleEvent<&Self::onListChanged>(kListUpdate);
    info.handleEvent<&Self::onUpdateTimer>("on-update-timer");
}

CError CLevelMeterListener::init()
{
    QEL_TRY(CObject::init(), getFullName());
    meter_ = dynamic_cast<CLevelMeterBase*>(getParent());
    QEL_TRY(require(exchange_, exchangePath_,
                    "@qelstr_CLevelMeterListener_init_NoExchange Unable to locate viz exchange"),
            getFullName());
    if (!listPath_.isEmpty()) {
        CObject* list = nullptr;
        QEL_TRY(require(list, listPath_,
                        "@qelstr_CLevelMeterListener_init_NoList Unable to locate audio channels list '%1'."),
                getFullName());
        list_ = dynamic_cast<CDynamicList*>(list);
        listenObject(list->getFullName(), "values-changed", kListUpdate);
        QEL_TRY(readChannels(), getFullName());
    }
    return {};
}

CError CLevelMeterListener::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    QEL_TRY(startTimer(), getFullName());
    return exchange_->addListener(vizName_, *this);
}

void CLevelMeterListener::release()
{
    if (exchange_) {
        exchange_->removeListener(*this);
        exchange_ = nullptr;
    }
    CObject::release();
}

CError CLevelMeterListener::startTimer()
{
    if (intervalSec_ <= 0.0 || !getNotifyServer() || !getNotifyServer()->getEventLoop()) {
        return {};
    }
    CAttrMap attributes;
    attributes["interval"] = CAttrValue(intervalSec_);
    CObject* timer = nullptr;
    QEL_TRY(createChild(timer, "core:timer", "update-timer", false, nullptr, &attributes), getFullName());
    listenObject(timer->getFullName(), "tick", "on-update-timer");
    hasTimer_ = true;
    return {};
}

// --- channels

CLevelMeterListener::Channel* CLevelMeterListener::findChannel(std::int32_t element)
{
    const auto found = std::ranges::find(channels_, element, &Channel::element);
    return found == channels_.end() ? nullptr : &*found;
}

// Those that stay keep their levels.
CError CLevelMeterListener::readChannels()
{
    std::vector<CDynamicListItem> items;
    if (list_) {
        QEL_TRY(list_->getItems({}, items), getFullName());
    }
    std::vector<Channel> channels;
    for (const CDynamicListItem& item : items) {
        const Channel* const known = findChannel(item.value);
        channels.push_back(known ? *known : Channel{.element = item.value});
    }
    channels_.swap(channels);
    isChanged_ = true;
    return {};
}

CError CLevelMeterListener::onListChanged(const CAttrMap&)
{
    QEL_TRY(readChannels(), getFullName());
    update();
    return meter_ ? meter_->announce(kListUpdate) : CError();
}

// --- data

void CLevelMeterListener::onVizData(const CAudioVizData& data)
{
    const auto* const meterData = dynamic_cast<const CAudioVizDataMeter*>(&data);
    if (!meterData) {
        return;
    }
    Channel* channel = findChannel(data.element);
    if (!channel && !list_) {
        const auto place = std::ranges::lower_bound(channels_, data.element, {}, &Channel::element);
        channel = &*channels_.insert(place, Channel{.element = data.element});
    }
    if (channel) {
        channel->level = meterData->level;
        channel->peak = meterData->peak;
        channel->dataSec = CViewContext::getTimeSec();
        channel->isActive = true;
        isChanged_ = true;
    }
}

void CLevelMeterListener::onVizTick()
{
    if (!hasTimer_) {
        update();
    }
}

CError CLevelMeterListener::onUpdateTimer(const CAttrMap&)
{
    update();
    return {};
}

void CLevelMeterListener::onVizClear()
{
    for (Channel& channel : channels_) {
        channel = Channel{.element = channel.element};
    }
    isChanged_ = true;
    update();
}

void CLevelMeterListener::update()
{
    bool isOneInactive = false;
    if (timeoutSec_ >= kLeastTimeoutSec) {
        const double nowSec = CViewContext::getTimeSec();
        for (Channel& channel : channels_) {
            if (channel.isActive && nowSec - channel.dataSec >= timeoutSec_) {
                channel.isActive = false;
                isOneInactive = true;
            }
        }
    }
    if (!meter_ || !(isChanged_ || isOneInactive)) {
        return;
    }
    isChanged_ = false;
    const CHold keep(*meter_);
    CError error = meter_->onListenerUpdate();
    if (!error && isOneInactive && !meter_->isReleased()) {
        error = meter_->announce("values-changed");
    }
    if (error) {
        traceError(error);
    }
}

} // namespace qel
