// Events of the object tree: what an object listens to and what it raises.
#include "CNotifyServer.h"
#include "CObject.h"
#include "Trace.h"

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

void CObject::listenObject(const CString& senderPath, const CString& eventName, const CString& handlerName)
{
    if (!classInfo_->eventHandler(handlerName)) {
        trace("Event handler '" + handlerName + "' not found in listenObject().", fullName_);
        return;
    }
    eventSubscriptions_.add(*this, senderPath, eventName, handlerName);
}

void CObject::unlistenObject(const CString& senderPath, const CString& eventName, const CString& handlerName)
{
    eventSubscriptions_.remove(*this, senderPath, eventName, handlerName);
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
    eventSubscriptions_.removeAll(*this);
    if (notifyServer_) {
        // What is still on its way to this object finds it gone.
        notifyServer_->forgetObject(objectNumber_);
    }
}

} // namespace qel
