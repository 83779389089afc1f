// Brings what meters measure to those who show it.
#include "CVizExchange.h"

#include "CNotifyServer.h"

#include <algorithm>

namespace qel {

void CVizExchange::buildClassInfo(CClassInfo& info)
{
    using Self = CVizExchange;
    CObject::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::fps_, &Self::attrVizFps>("viz-fps", 30.0);
    info.handleEvent<&Self::onTimer>("on-timer");
    info.handleEvent<&Self::onClear>("clear");
    info.handleEvent<&Self::onClear>("on-clear");
}

CError CVizExchange::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CVizExchange_init_NoInterface No interfacing object '%1' found."),
            getFullName());
    client_->setVizProcessor(this);
    listenObject(client_->getFullName(), "clear", "on-clear");
    return {};
}

template <class Call>
void CVizExchange::forListeners(Call&& call)
{
    const CHold keep(*this);
    ++calls_;
    const std::size_t count = entries_.size();
    for (std::size_t i = 0; i < std::min(count, entries_.size()); ++i) {
        if (entries_[i].listener) {
            call(entries_[i]);
        }
    }
    if (--calls_ == 0) {
        std::erase_if(entries_, [](const Entry& entry) { return !entry.listener; });
    }
}

void CVizExchange::release()
{
    forListeners([](Entry& entry) { entry.listener->onVizGone(); });
    entries_.clear();
    if (client_ && !client_->isReleased()) {
        client_->setVizProcessor(nullptr);
    }
    timer_ = nullptr;
    CObject::release();
}

// --- listeners

bool CVizExchange::isListenedTo(const CString& source) const
{
    return std::ranges::any_of(entries_,
                               [&](const Entry& entry) { return entry.listener && entry.source == source; });
}

CError CVizExchange::addListener(const CString& source, CVizListener& listener)
{
    const auto known =
        std::ranges::find_if(entries_, [&](const Entry& entry) { return entry.source == source; });
    const std::int32_t id = known == entries_.end() ? kUnknown : known->id;
    const bool isFirst = !isListenedTo(source);
    entries_.push_back({source, id, &listener});
    if (isFirst) {
        QEL_TRY(client_->send(record::CListenViz{.source = source, .listens = true}), getFullName());
    }
    return startTimer();
}

void CVizExchange::removeListener(CVizListener& listener)
{
    const auto found =
        std::ranges::find_if(entries_, [&](const Entry& entry) { return entry.listener == &listener; });
    if (found == entries_.end()) {
        return;
    }
    const CString source = found->source;
    found->listener = nullptr;
    if (calls_ == 0) {
        entries_.erase(found);
    }
    if (!isListenedTo(source) && client_ && !client_->isReleased()) {
        if (CError error = client_->send(record::CListenViz{.source = source, .listens = false})) {
            traceError(error);
        }
    }
    if (std::ranges::none_of(entries_, [](const Entry& entry) { return entry.listener; })) {
        releaseObject(timer_);
        timer_ = nullptr;
    }
}

// --- time

CError CVizExchange::startTimer()
{
    if (timer_ || !getNotifyServer() || !getNotifyServer()->getEventLoop()) {
        return {};
    }
    CAttrMap attributes;
    attributes["interval"] = CAttrValue(1.0 / std::clamp(fps_, 1.0, 100.0));
    QEL_TRY(createChild(timer_, "core:timer", "timer", false, nullptr, &attributes), getFullName());
    listenObject(timer_->getFullName(), "tick", "on-timer");
    return {};
}

CError CVizExchange::attrVizFps()
{
    return timer_ ? timer_->setAttribute("interval", CAttrValue(1.0 / std::clamp(fps_, 1.0, 100.0)), true)
                  : CError();
}

CError CVizExchange::onTimer(const CAttrMap&)
{
    if (entries_.empty()) {
        return {};
    }
    QEL_TRY(client_->send(record::CGetViz{}), getFullName());
    forListeners([](Entry& entry) { entry.listener->onVizTick(); });
    return {};
}

CError CVizExchange::onClear(const CAttrMap&)
{
    forListeners([](Entry& entry) { entry.listener->onVizClear(); });
    return {};
}

// --- data

void CVizExchange::onVizSource(const CString& source, std::int32_t id)
{
    for (Entry& entry : entries_) {
        if (entry.source == source) {
            entry.id = id;
        }
    }
}

void CVizExchange::onVizData(const CAudioVizData& data)
{
    forListeners([&](Entry& entry) {
        if (entry.id == data.id && entry.id != kUnknown) {
            entry.listener->onVizData(data);
        }
    });
}

} // namespace qel
