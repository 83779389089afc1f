// Events of the object tree: what an object listens to and what it raises.
#include "CNotifyServer.h"
#include "CObject.h"
#include "CTrace.h"

namespace qel {

void CObject::setNotifyServer(CNotifyServer* server)
{
    dropEventSubscriptions();
    notifyServer_ = server;
    numberObject();
}

void CObject::numberObject()
{
    objectNumber_ = notifyServer_ ? notifyServer_->addObject(*this) : -1;
}

// The full name of the object at the path; without such an object the path itself, which is then the full
// name of an object still to come.
CString CObject::senderName(const CString& path)
{
    const CObject* sender = findObject(path);
    return sender ? sender->fullName_ : path;
}

void CObject::listenObject(const CString& senderPath, const CString& eventName, const CString& handlerName)
{
    if (!classInfo_->eventHandler(handlerName)) {
        trace("Event handler '" + handlerName + "' not found in listenObject().", fullName_);
        return;
    }
    if (notifyServer_) {
        const CString sender = senderName(senderPath);
        eventSubscriptions_[sender].insert(eventName);
        notifyServer_->addListener(sender, eventName, *this, handlerName);
    }
}

void CObject::unlistenObject(const CString& senderPath, const CString& eventName, const CString& handlerName)
{
    const CString sender = senderName(senderPath);
    const auto events = eventSubscriptions_.find(sender);
    if (!notifyServer_ || events == eventSubscriptions_.end() || !events->second.contains(eventName)) {
        return;
    }
    if (notifyServer_->removeListener(sender, eventName, *this, handlerName)) {
        events->second.erase(eventName);
        if (events->second.empty()) {
            eventSubscriptions_.erase(events);
        }
    }
}

CError CObject::notify(const CString& eventName, const CAttrMap& parameters, bool post)
{
    return notifyServer_ ? notifyServer_->notify(fullName_, eventName, parameters, post) : CError();
}

CError CObject::notifyTo(const CString& listenerPath, const CString& eventName, const CAttrMap& parameters,
                         bool post)
{
    CObject* listener = notifyServer_ ? findObject(listenerPath) : nullptr;
    if (!listener || listener->notifyServer_ != notifyServer_) {
        return {};
    }
    return notifyServer_->notifyObject(*listener, fullName_, eventName, parameters, post);
}

void CObject::dropEventSubscriptions()
{
    if (notifyServer_) {
        for (const auto& [sender, events] : eventSubscriptions_) {
            for (const CString& event : events) {
                notifyServer_->removeListener(sender, event, *this);
            }
        }
        // What is still on its way to this object finds it gone.
        notifyServer_->forgetObject(objectNumber_);
    }
    eventSubscriptions_.clear();
}

} // namespace qel
