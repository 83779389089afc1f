// Listener tables, posting and delivery of events.
#include "CNotifyServer.h"

#include "CEventLoop.h"
#include "CObject.h"
#include "CSystem.h"
#include "ThreadId.h"

#include <algorithm>
#include <utility>

namespace qel {

CNotifyServer::CNotifyServer()
    : threadId_(platform::currentThreadId()), self_(std::make_shared<CNotifyServer*>(this))
{}

CNotifyServer::~CNotifyServer() = default;

void CNotifyServer::setEventLoop(CEventLoop* loop)
{
    {
        const CLock lock(loopSection_);
        loop_ = loop;
        ++loopNumber_;
    }
    if (loop) {
        tryPost(kServerName, kLoopEvent);
    }
}

// --- objects

std::int32_t CNotifyServer::addObject(CObject& object)
{
    const CLock lock(numberSection_);
    objects_[nextObjectNumber_] = &object;
    return nextObjectNumber_++;
}

void CNotifyServer::forgetObject(std::int32_t number)
{
    const CLock lock(numberSection_);
    objects_.erase(number);
}

CObject* CNotifyServer::findObject(std::int32_t number)
{
    const CLock lock(numberSection_);
    const auto entry = objects_.find(number);
    return entry == objects_.end() ? nullptr : entry->second;
}

// --- listening

void CNotifyServer::addListener(const CString& sender, const CString& event, const CObject& listener,
                                const CString& handler)
{
    const CLock lock(listenerSection_);
    Listeners& listeners = listeners_[sender][event];
    const auto isSame = [&](const Listener& entry) {
        return entry.id == listener.getObjectNumber() && entry.handler == handler;
    };
    if (std::ranges::none_of(listeners, isSame)) {
        listeners.push_back({listener.getObjectNumber(), listener.getFullName(), handler});
    }
}

void CNotifyServer::removeListener(const CString& sender, const CString& event, const CObject& listener,
                                   const CString& handler)
{
    const CLock lock(listenerSection_);
    const auto events = listeners_.find(sender);
    if (events == listeners_.end()) {
        return;
    }
    if (const auto entry = events->second.find(event); entry != events->second.end()) {
        std::erase_if(entry->second, [&](const Listener& one) {
            return one.id == listener.getObjectNumber() && one.handler == handler;
        });
        if (entry->second.empty()) {
            events->second.erase(entry);
        }
    }
    if (events->second.empty()) {
        listeners_.erase(events);
    }
}

CNotifyServer::Listeners CNotifyServer::listenersTo(const CString& sender, const CString& event)
{
    const CLock lock(listenerSection_);
    const auto events = listeners_.find(sender);
    if (events == listeners_.end()) {
        return {};
    }
    const auto entry = events->second.find(event);
    return entry == events->second.end() ? Listeners() : entry->second;
}

// --- raising

CError CNotifyServer::notify(CString sender, CString event, const CAttrMap& parameters, bool post)
{
    return send(listenersTo(sender, event), sender, event, parameters, post);
}

bool CNotifyServer::tryPost(const CString& sender, const CString& event)
{
    bool isPosted = true;
    for (const Listener& listener : listenersTo(sender, event)) {
        bool isThisPosted = false;
        traceError(post(listener, sender, event, {}, isThisPosted));
        isPosted = isPosted && isThisPosted;
    }
    return isPosted;
}

CError CNotifyServer::notifyObject(CObject& listener, CString sender, CString event,
                                   const CAttrMap& parameters, bool post)
{
    Listeners listeners = listenersTo(sender, event);
    std::erase_if(listeners, [&](const Listener& entry) { return entry.id != listener.getObjectNumber(); });
    if (listeners.empty() && listener.getClassInfo().eventHandler(event)) {
        listeners.push_back({listener.getObjectNumber(), listener.getFullName(), event});
    }
    return send(listeners, sender, event, parameters, post);
}

CError CNotifyServer::send(const Listeners& listeners, const CString& sender, const CString& event,
                           const CAttrMap& parameters, bool post)
{
    const bool mustPost = post || platform::currentThreadId() != threadId_;
    const std::weak_ptr<CNotifyServer*> alive = self_;
    for (const Listener& listener : listeners) {
        if (alive.expired()) {
            return {}; // a handler has ended the whole tree
        }
        bool isPosted = false;
        if (mustPost) {
            QEL_TRY(this->post(listener, sender, event, parameters, isPosted), sender);
        }
        if (!isPosted) {
            QEL_TRY(callHandler(listener.id, listener.handler, parameters), listener.fullName);
        }
    }
    return {};
}

CError CNotifyServer::post(const Listener& listener, const CString& sender, const CString& event,
                           const CAttrMap& parameters, bool& outIsPosted)
{
    const CLock lock(loopSection_);
    outIsPosted = loop_ != nullptr;
    if (!loop_) {
        return {};
    }
    auto posted = std::make_shared<PostedEvent>();
    posted->record["event-name"] = CAttrValue(event);
    posted->record["sender"] = CAttrValue(sender);
    posted->record["listener"] = CAttrValue(listener.fullName);
    posted->record["listener-id"] = CAttrValue(listener.id);
    posted->record["listener-proc"] = CAttrValue(listener.handler);
    posted->parameters = parameters;
    CError error = CSystem::sendEvent(*loop_, [server = std::weak_ptr(self_), posted] {
        if (const auto alive = server.lock()) {
            (*alive)->deliver(*posted);
        }
    });
    outIsPosted = !error;
    return error;
}

CError CNotifyServer::callHandler(std::int32_t listenerId, const CString& handler, const CAttrMap& parameters)
{
    // Looked for each time: the handler before this one may have released the object.
    CObject* listener = findObject(listenerId);
    const CEventHandler* proc = listener ? listener->getClassInfo().eventHandler(handler) : nullptr;
    if (!proc) {
        return {};
    }
    const CObject::CHold hold(*listener);
    return (*proc)(*listener, parameters);
}

void CNotifyServer::deliver(const PostedEvent& event)
{
    const auto text = [&](const char* key) { return event.record.at(key).toString(); };
    const std::int32_t id = event.record.at("listener-id").toInteger().value_or(-1);
    if (CError error = callHandler(id, text("listener-proc"), event.parameters)) {
        // Whoever raised the event is long past it.
        traceError(reportError(std::move(error), __FILE__, __LINE__, text("listener"),
                               "@qelstr_CNotifyServer_deliver_Handler Event '%1' of '%2' failed.",
                               {text("event-name"), text("sender")}));
    }
}

} // namespace qel
