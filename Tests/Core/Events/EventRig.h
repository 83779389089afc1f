// A tree with an event server and objects that log the events they receive.
#pragma once

#include "CEventLoop.h"
#include "CNotifyServer.h"
#include "CreatorRegistry.h"
#include "TreeFixture.h"

#include <algorithm>
#include <functional>
#include <thread>

namespace qel::test {

// Logs "<own name>:<handler>:<parameter x>" for the events "one" and "two" and runs `onEvent` on each.
class CEventProbe : public CObject
{
public:
    static inline std::vector<std::string> log;
    static inline std::vector<std::thread::id> threads;
    static inline std::function<CError(CEventProbe&)> onEvent;

    static void buildClassInfo(CClassInfo& info)
    {
        CObject::buildClassInfo(info);
        info.handleEvent<&CEventProbe::onOne>("one");
        info.handleEvent<&CEventProbe::onTwo>("two");
    }

private:
    CError onOne(const CAttrMap& parameters) { return note("one", parameters); }
    CError onTwo(const CAttrMap& parameters) { return note("two", parameters); }
    CError note(const char* handler, const CAttrMap& parameters)
    {
        const auto x = parameters.find("x");
        const CString text = x == parameters.end() ? CString() : x->second.toString();
        log.push_back((getFullName() + ":" + handler + ":" + text).toUtf8());
        threads.push_back(std::this_thread::get_id());
        return onEvent ? onEvent(*this) : CError();
    }
};

// Enters the rows while it lives. Declared before the trees, so that no class ends before its objects.
class TestClasses
{
public:
    explicit TestClasses(const CCreatorRow* rows) { EXPECT_OK(registerCreators(rows)); }
    ~TestClasses() { clearCreators(); }
    TestClasses(const TestClasses&) = delete;
    TestClasses& operator=(const TestClasses&) = delete;
};

// An object tree with its server, as the application makes one.
class EventRig
{
public:
    EventRig() : root(std::make_unique<TreeRoot>()), server(std::make_unique<CNotifyServer>())
    {
        (*root)->setNotifyServer(server.get());
    }
    ~EventRig() { end(); }
    void end()
    {
        root.reset();
        server.reset();
    }

    template <class T = CObject>
    T& add(const CString& tag, const CString& name, const CAttrMap& attributes = {})
    {
        T* object = nullptr;
        const CError error = (*root)->createChild(object, tag, name, false, nullptr, &attributes);
        EXPECT_FALSE(error) << error.text();
        return *object;
    }

    std::unique_ptr<TreeRoot> root;
    std::unique_ptr<CNotifyServer> server;
};

inline CAttrMap withX(const char* value)
{
    CAttrMap parameters;
    parameters["x"] = CAttrValue(value);
    return parameters;
}

} // namespace qel::test
