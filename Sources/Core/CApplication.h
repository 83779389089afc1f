// Everything there is once per process.
#pragma once

#include "CApplicationData.h"
#include "CreatorRegistry.h"
#include "Streams/ResourceMap.h"

#include <map>

namespace qel {

class CNotifyServer;
class CObject;

// What the application is made of; the tables live as long as the process.
struct CApplicationParts
{
    const CCreatorRow* creators = nullptr;   // ends with a row without a tag
    const CResourceRow* resources = nullptr; // ends with a row without a record
    CString sharedFile = "SharedData.xml";
};

// The library's process-wide part: stores, settings read at start, the shared tree, and the roots of all
// instances. start() when the library is loaded, finish() before it is unloaded, both on one thread with no
// other inside; a process may do so again. In between get() is not null, and all other calls may come from
// any thread.
//
// A failure to load the shared tree is only traced: each instance then fails with its own message. Roots
// belong to whoever had them made, who gives them back before finish().
class CApplication
{
public:
    // On error there is no application; the library stays loaded, and each entry reports the lack.
    static CError start(const CApplicationParts& parts);
    // Ends the shared tree, then the classes. Does nothing without an application.
    static void finish();
    // Null before start() and after finish().
    static CApplication* get();

    CApplication(const CApplication&) = delete;
    CApplication& operator=(const CApplication&) = delete;
    ~CApplication();

    // Builds the shared tree from a file or, without a name, empty. Its root is published first, so that its
    // own nodes can refer to it. A tree that fails to load is released: no instance is to meet half of it.
    CError initSharedObject(const CString& fileName);

    // Builds a tree with an event server and an instance number of its own, on the thread that it will belong
    // to. On error `outRoot` is null and nothing is left behind.
    CError initRootObject(CObject*& outRoot, const CString& fileName = {});
    // The counterpart of initRootObject(): releases the tree, then its server. Null is allowed.
    void releaseRootObject(CObject* root);
    // The server of an instance number, or null.
    CNotifyServer* findInstance(std::int32_t number);

    CApplicationData& getGlobalData() { return globalData_; }
    CApplicationData& getLocalData() { return localData_; }
    // Factor of all sizes in the user interface, as the setting stands now. May read a file.
    double getUIScale();
    // Path of the library; empty if the system does not tell.
    const CString& getModulePath() const { return modulePath_; }

private:
    CApplication();

    CError initApplication(const CApplicationParts& parts);
    void finishApplication();
    static CError registerWindowClasses();

    CGlobalData globalData_;
    CLocalData localData_;
    CString modulePath_;

    CCriticalSection instanceSection_; // guards the next two
    std::int32_t lastInstanceNumber_ = 0;
    std::map<std::int32_t, CNotifyServer*> instances_;
};

} // namespace qel
