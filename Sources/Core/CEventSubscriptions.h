// What one object listens to.
#pragma once

#include "CString.h"

#include <vector>

namespace qel {

class CObject;

// Keeps the subscriptions of an object with the path by which each was asked for: when it is undone the
// sender may be gone, and the path lead nowhere or to another object. Enters them in the notify server of the
// object's tree; does nothing in a tree without one. For the tree's thread.
class CEventSubscriptions
{
public:
    void add(CObject& listener, const CString& path, const CString& event, const CString& handler);
    // Ends those that were made with this path; without any, those whose sender the path names now.
    void remove(CObject& listener, const CString& path, const CString& event, const CString& handler);
    void removeAll(const CObject& listener);

private:
    struct Subscription
    {
        CString path;
        CString sender; // a full name
        CString event;
        CString handler;
    };

    std::vector<Subscription> subscriptions_;
};

} // namespace qel
