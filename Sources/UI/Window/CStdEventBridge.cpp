// The event loop of an interface.
#include "CStdEventBridge.h"

#include "CNotifyServer.h"

namespace qel {

void CStdEventBridge::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
}

CError CStdEventBridge::init()
{
    QEL_TRY(CObject::init(), getFullName());
    CNotifyServer* const server = getNotifyServer();
    if (!server) {
        QEL_FAIL(getFullName(), "@qelstr_CStdEventBridge_init_NoServer The tree has no events to deliver.");
    }
    if (!server->getEventLoop()) {
        loop_ = std::make_shared<CEventLoop>();
        server->setEventLoop(loop_.get());
    }
    return {};
}

void CStdEventBridge::release()
{
    if (loop_) {
        getNotifyServer()->setEventLoop(nullptr);
        loop_.reset();
    }
    CObject::release();
}

CEventLoop* CStdEventBridge::getEventLoop() const
{
    CNotifyServer* const server = getNotifyServer();
    return server ? server->getEventLoop() : nullptr;
}

void CStdEventBridge::drain()
{
    // What is delivered may release this object, and the loop with it.
    const std::shared_ptr<CEventLoop> own = loop_;
    if (CEventLoop* const loop = getEventLoop()) {
        loop->drain();
    }
}

} // namespace qel
