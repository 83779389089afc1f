// What one object listens to.
#include "CEventSubscriptions.h"

#include "CNotifyServer.h"
#include "CObject.h"
#include "CObjectPath.h"

#include <algorithm>

namespace qel {

void CEventSubscriptions::add(CObject& listener, const CString& path, const CString& event,
                              const CString& handler)
{
    CNotifyServer* server = listener.getNotifyServer();
    if (!server) {
        return;
    }
    Subscription added{path, CObjectPath(path).nameFrom(listener), event, handler};
    const bool isThere = std::ranges::any_of(subscriptions_, [&](const Subscription& one) {
        return one.sender == added.sender && one.event == event && one.handler == handler;
    });
    if (!isThere) {
        server->addListener(added.sender, event, listener, handler);
        subscriptions_.push_back(std::move(added));
    }
}

void CEventSubscriptions::remove(CObject& listener, const CString& path, const CString& event,
                                 const CString& handler)
{
    const auto end = [&](auto isMeant) {
        return std::erase_if(subscriptions_, [&](const Subscription& one) {
            if (!(one.event == event && one.handler == handler && isMeant(one))) {
                return false;
            }
            listener.getNotifyServer()->removeListener(one.sender, event, listener, handler);
            return true;
        });
    };
    if (end([&](const Subscription& one) { return one.path == path; }) == 0) {
        const CString sender = CObjectPath(path).nameFrom(listener);
        end([&](const Subscription& one) { return one.sender == sender; });
    }
}

void CEventSubscriptions::removeAll(const CObject& listener)
{
    for (const Subscription& one : std::exchange(subscriptions_, {})) {
        listener.getNotifyServer()->removeListener(one.sender, one.event, listener, one.handler);
    }
}

} // namespace qel
