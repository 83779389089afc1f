// The events of one object tree.
#pragma once

#include "CAttrValue.h"
#include "CCriticalSection.h"
#include "CError.h"

#include <atomic>
#include <memory>
#include <unordered_map>
#include <vector>

namespace qel {

class CEventLoop;
class CObject;

// Knows who listens to whom in one tree, numbers the tree's objects, and delivers events. Made by the
// application together with a root, on the thread the tree belongs to, and destroyed after the root.
//
// Handlers run on that thread: at once when the event is raised there, otherwise by way of the event loop, in
// the order of posting. A posted event holds names and numbers only, so its sender, its listener, the server
// and the loop may all be gone before it arrives; it is then dropped. An event posted before its listener
// unsubscribes still arrives. A tree without an event loop delivers at once in the caller's thread, whichever
// that is. Handlers may raise events, subscribe, and release objects, up to the whole tree.
//
// Any thread may call post(), notify() and notifyObject(); the rest belongs to the tree's thread.
class CNotifyServer
{
public:
    CNotifyServer();
    CNotifyServer(const CNotifyServer&) = delete;
    CNotifyServer& operator=(const CNotifyServer&) = delete;
    ~CNotifyServer();

    // The number among the process's trees, given by the application; 0 before.
    std::int32_t getInstanceNumber() const { return instanceNumber_; }
    void setInstanceNumber(std::int32_t number) { instanceNumber_ = number; }

    // The loop that carries posted events to the tree's thread, which must own it; null for none. Whoever
    // owns the loop sets null before it goes: no thread uses the loop once that call has returned. What is
    // posted and not yet delivered goes down with the loop. To a new loop the event kLoopEvent is posted in
    // the name kServerName, so that whoever waits for delivery can ask again.
    void setEventLoop(CEventLoop* loop);
    CEventLoop* getEventLoop() const { return loop_; }
    static constexpr const char* kServerName = "*notify-server"; // no name a tree would use
    static constexpr const char* kLoopEvent = "event-loop";

    // --- objects

    // Takes the next running number for an object and keeps track of it until forgetObject().
    std::int32_t addObject(CObject& object);
    void forgetObject(std::int32_t number);
    // The object, or null if it is gone.
    CObject* findObject(std::int32_t number);

    // --- listening

    // `handler` is a name in the event table of the listener's class. The same listener with the same handler
    // is entered once.
    void addListener(const CString& sender, const CString& event, const CObject& listener,
                     const CString& handler);
    void removeListener(const CString& sender, const CString& event, const CObject& listener,
                        const CString& handler);

    // --- raising

    // Tells all that listen to `event` of `sender`. Ends with the first handler, or the first post, that
    // fails. Names come by value: a handler may end the object they belong to.
    CError notify(CString sender, CString event, const CAttrMap& parameters, bool post);
    // Posts to all that listen, whichever thread this is, and never runs a handler here. Without a loop, or
    // when a post fails, the result is false.
    bool tryPost(const CString& sender, const CString& event);
    // How often the loop was set: what was posted under another number may never arrive.
    std::int32_t getLoopNumber() const { return loopNumber_; }
    // Tells one object of the tree: through its subscriptions to the event, or else through the handler that
    // its class has under the event's own name.
    CError notifyObject(CObject& listener, CString sender, CString event, const CAttrMap& parameters,
                        bool post);

private:
    struct Listener
    {
        std::int32_t id;  // object number
        CString fullName; // for messages and records: the object itself is touched by the tree's thread only
        CString handler;
    };
    using Listeners = std::vector<Listener>;

    // An event on its way through the loop. The record has the keys "event-name", "sender", "listener",
    // "listener-id" and "listener-proc"; the parameters stand apart, since they may use the same names.
    struct PostedEvent
    {
        CAttrMap record;
        CAttrMap parameters;
    };

    Listeners listenersTo(const CString& sender, const CString& event);
    CError send(const Listeners& listeners, const CString& sender, const CString& event,
                const CAttrMap& parameters, bool post);
    // Posts to the loop; `outIsPosted` is false if there is none.
    CError post(const Listener& listener, const CString& sender, const CString& event,
                const CAttrMap& parameters, bool& outIsPosted);
    CError callHandler(std::int32_t listenerId, const CString& handler, const CAttrMap& parameters);
    void deliver(const PostedEvent& event);

    const std::uint64_t threadId_;
    std::int32_t instanceNumber_ = 0;

    CCriticalSection loopSection_; // guards the use of the loop by other threads
    CEventLoop* loop_ = nullptr;
    std::atomic<std::int32_t> loopNumber_{0};
    // Posted events hold a weak reference; it ends with the server, on the thread that delivers them.
    std::shared_ptr<CNotifyServer*> self_;

    CCriticalSection numberSection_; // guards the next two
    std::int32_t nextObjectNumber_ = 0;
    std::unordered_map<std::int32_t, CObject*> objects_;

    CCriticalSection listenerSection_;            // guards what follows
    CStringMap<CStringMap<Listeners>> listeners_; // sender -> event -> who listens
};

} // namespace qel
