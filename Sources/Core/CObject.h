// The node of every object tree.
#pragma once

#include "CAttrFollowers.h"
#include "CAttrValue.h"
#include "CByteBuffer.h"
#include "CCheckedObject.h"
#include "CChildList.h"
#include "CClassInfo.h"
#include "CError.h"
#include "CEventSubscriptions.h"
#include "CInlineArray.h"

#include <atomic>
#include <memory>

namespace qel {

class CNodeCursor;
class CNotifyServer;

// All long-lived things are nodes of a tree of CObjects built from data: created by tag, configured by string
// attributes, found by path. A process holds one shared tree, which nothing changes once built, and one tree
// per plug-in instance.
//
// A node owns its children; releaseObject() is the one way to destroy it. An object may be released from
// inside its own attribute and event handlers: it leaves the tree at once, and its memory goes when the last
// of them has returned. Life cycle: attributes, init, applyAttrs, children, initChilds; overrides call the
// base first and pass its error on. In init and
// applyAttrs a node sees parents complete up to their applyAttrs and no child of its own; in initChilds all
// its children are ready.
//
// A tree belongs to the thread that builds it. Any thread may read a finished tree; the audio thread takes
// what it needs at init time and never walks it.
class CObject : public CCheckedObject
{
public:
    enum class InitState : std::int32_t
    {
        kCreated,
        kInitDone,
        kAttrsApplied,
        kChildsDone,
        kReady
    };

    // Keeps the memory of an object that is released meanwhile until the hold ends; for code that calls out
    // and goes on with the object afterwards.
    class CHold
    {
    public:
        explicit CHold(CObject& object) : object_(object) { ++object.holds_; }
        CHold(const CHold&) = delete;
        CHold& operator=(const CHold&) = delete;
        ~CHold();

    private:
        CObject& object_;
    };

    CObject();
    ~CObject() override;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    static void buildClassInfo(CClassInfo& info);

    // --- life cycle, overridable

    // Replays the attributes of the template, if there is one, then the creation attributes over them, and
    // reads bound attributes into their members.
    virtual CError init();
    // Runs the handlers of attributes that arrived, in the order of declaration; then creates the template's
    // children.
    virtual CError applyAttrs();
    virtual CError initChilds();
    // A child was linked. An error fails its creation.
    virtual CError onChildAdded(CObject& child);
    // Unlinks a child without destroying it.
    virtual void removeChild(CObject& child);
    virtual void onChildRemoved(CObject& child);
    // Drops all subscriptions to events and attributes. Tolerates an object that never came up.
    virtual void release();
    // Leaves the parent.
    virtual void detach();
    // An attribute that this object follows has changed on `sender`; `key` is the name here.
    virtual CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value);
    // What "{}" in a value of attribute `key` stands for: the value that it has here or inherits.
    virtual CString getPresentValue(const CString& key) const { return getInheritedAttribute(key); }
    // Asked before a value is stored. True if the class has kept it elsewhere, with the result in `outError`:
    // then the attribute stays as it is.
    virtual bool divertAttribute(const CString&, const CAttrValue&, CError& /*outError*/) { return false; }
    // Handler of the event "release-child-bridged": releases the object whose full name is the parameter
    // `sender`, so that an object can end from inside its own event handling.
    virtual CError onReleaseChild(const CAttrMap& parameters);

    // --- building

    // Creates and links a child without initialising it. With `useTemplates` the tag may be that of a
    // run-time template of this object, of a parent or of the shared tree, the nearest first. On an error
    // from onChildAdded() the child stays linked, for the caller to release.
    CError createChildRaw(CObject*& outChild, const CString& tag, const CString& name, bool useTemplates);

    // Creates and initialises a child of class T. `creationData` is handed to the class as it is;
    // `attributes`, which may be null, win over those of a template. On error nothing is left behind and
    // outChild is null.
    template <class T>
    CError createChild(T*& outChild, const CString& tag, const CString& name, bool templateRequired = false,
                       void* creationData = nullptr, const CAttrMap* attributes = nullptr);

    // True if a run-time template of this name can be instantiated here.
    bool hasTemplate(const CString& name) const { return findTemplate(name) != nullptr; }

    // Loads the compiled tree file or resource `fileName` onto this object: attributes and children of the
    // file's root land here. With `fullInit` this object runs through its own life cycle too. On error the
    // children made so far stay for the caller to release.
    CError loadCompiled(const CString& fileName, bool fullInit);
    // Reads one node from `cursor`, which moves behind what was read. Damaged data gives an error.
    CError loadNode(CNodeCursor& cursor, bool fullInit, bool skipHead, bool skipAttributes,
                    bool skipChildren);

    // Releases the object, its children from last to first, and destroys it, or lets the last hold on it do
    // so. Null is allowed, and so is an object that is being released already.
    static void releaseObject(CObject* object);
    // True from the call of releaseObject() on.
    bool isReleased() const { return isReleased_; }

    // --- finding

    // Walks a path: segments separated by ".", "^" for the parent, "/" for the root, "$name" for the text of
    // an attribute, "shared::" at the front for the shared tree. A path that starts with none of ".", "^",
    // "$" starts at the root. Null if nothing matches.
    CObject* findObject(const CString& path);
    const CObject* findObject(const CString& path) const
    {
        return const_cast<CObject*>(this)->findObject(path);
    }
    // The object of class T at the path, in `out`; otherwise `out` is null and the error is `message`, with
    // the path for its %1.
    template <class T>
    CError require(T*& out, const CString& path, const char* message,
                   CSourcePlace where = CSourcePlace::current());
    // One segment, as CChildList::find().
    CObject* findChild(const CString& segment) const { return children_.find(segment); }

    CObject* getParent() const { return parent_; }
    CObject* getRoot() const { return root_; }
    const CString& getTag() const { return tag_; }
    const CString& getFullName() const { return fullName_; }
    // Its own name, without the path: what the full name ends with.
    CString getName() const { return getAttrString("name"); }
    std::size_t getChildCount() const { return children_.size(); }
    CObject* getChild(std::size_t index) const { return children_[index]; }
    InitState getInitState() const { return initState_; }
    bool isReadOnly() const { return isReadOnly_; }
    bool isTemplate() const { return isTemplate_; }
    // Running number in its tree, -1 in a tree without a notify server.
    std::int32_t getObjectNumber() const { return objectNumber_; }
    CNotifyServer* getNotifyServer() const { return notifyServer_; }
    void* getCreationData() const { return creationData_; }

    // --- attributes

    // Expands the {...} references of a string value (AttrReferences.h), stores it, and tells the objects
    // that follow it. A declared attribute's handler runs now if `immediate`, in applyAttrs otherwise. Does
    // nothing on a read-only object or for an empty key. An expansion without end, or to more than a million
    // characters, is an error and changes nothing.
    CError setAttribute(const CString& key, const CAttrValue& value, bool immediate);
    CError setAttribute(const CString& key, const CString& value, bool immediate);
    CError setAttribute(const CString& key, const char* value, bool immediate)
    {
        return setAttribute(key, CString(value), immediate);
    }
    // Sets all entries in key order with their handlers deferred, then runs them if `applyNow`.
    CError setAttributes(const CAttrMap& attributes, bool applyNow);
    // Takes an own attribute away, as if it had never been set; its handler runs now.
    CError removeAttribute(const CString& key);
    // The expansion of one reference: what "{expression}" stands for on this object.
    CString getAttribute(const CString& expression);

    // This object's own attribute, or the default if it is missing or does not convert.
    bool getAttrBool(const CString& name, bool fallback = false) const;
    double getAttrReal(const CString& name, double fallback = 0.0) const;
    std::int32_t getAttrInt(const CString& name, std::int32_t fallback = 0) const;
    CString getAttrString(const CString& name, const CString& fallback = {}) const;
    // This object's own attribute, or null.
    const CAttrValue* findAttr(const CString& name) const;
    // The text of the attribute of this object or of the nearest parent that has it; empty if none has.
    CString getInheritedAttribute(const CString& name) const;

    // All attributes of this object.
    const CAttrMap& getAttributes() const { return attributes_; }

    // From now on a change of `targetName` on `target` sets `ownName` here. Empty names follow every
    // attribute under its own key.
    void listenAttribute(CObject& target, const CString& targetName, const CString& ownName);

    // --- events (any thread may call notify)

    // Calls this class's handler `handlerName` when the object at `senderPath` raises `eventName`. A path
    // that leads nowhere yet stands for the full name of an object still to come. An unknown handler is
    // traced and ignored; so is a second subscription with the same handler.
    void listenObject(const CString& senderPath, const CString& eventName, const CString& handlerName);
    // Undoes listenObject() with the same path, even when the sender has gone or something else is there now;
    // or with another path to the same sender.
    void unlistenObject(const CString& senderPath, const CString& eventName, const CString& handlerName);
    // Raises an event in the name of this object. Handlers run at once on the tree's own thread, and are
    // posted to it from another thread or with `post`. Stops at the first handler that fails. A no-op in a
    // tree without a server.
    CError notify(const CString& eventName, const CAttrMap& parameters, bool post);
    // The same to one object: through its subscriptions to this event, or else through the handler that its
    // class has under the event's own name. Nothing happens if there is neither.
    CError notifyTo(const CString& listenerPath, const CString& eventName, const CAttrMap& parameters,
                    bool post);

    // --- for the runtime itself

    // The root of the shared tree, or null. Set by the application alone.
    static CObject* sharedObject();
    static void setSharedObject(CObject* object);
    void setClassInfo(const CClassInfo& info) { classInfo_ = &info; }
    const CClassInfo& getClassInfo() const { return *classInfo_; }
    // Makes this object, which must be a root, part of a tree with this server.
    void setNotifyServer(CNotifyServer* server);

private:
    friend class CNodeLoader;

    // What a template holder makes its instances from.
    struct CTemplateBody
    {
        CString contentTag; // of the instances
        CByteBuffer node;   // encoded
    };

    const CObject* findTemplate(const CString& name) const;
    CError initNewChild(CObject& child, void* creationData, const CAttrMap* attributes);
    CError start(void* creationData, const CAttrMap* attributes);
    void registerTemplate(CObject& holder);
    void numberObject();

    CError storeAttribute(const CString& key, CAttrValue value, bool immediate);
    CError applyPendingAttrs();
    void dropEventSubscriptions();
    void leaveTree();

    const CClassInfo* classInfo_;
    CAttrMap attributes_;
    CInlineArray<std::uint8_t, 16> pendingAttrs_; // by attribute index
    CChildList children_;
    CString fullName_;
    InitState initState_ = InitState::kCreated;
    bool isReadOnly_ = false;
    bool isTemplate_ = false;
    bool isReleased_ = false;
    std::atomic<std::int32_t> holds_{0};
    void* creationData_ = nullptr;
    const CAttrMap* creationAttrs_ = nullptr; // only while createChild() runs
    const CObject* template_ = nullptr;       // what this object was instantiated from
    CEventSubscriptions eventSubscriptions_;
    CNotifyServer* notifyServer_ = nullptr;
    CObject* parent_ = nullptr;
    CObject* root_;
    std::int32_t objectNumber_ = -1;
    CString tag_;
    std::unique_ptr<CTemplateBody> templateBody_; // null but on a template holder
    CStringMap<CObject*> runTimeTemplates_;       // template children by name
    CAttrFollowers attrFollowers_{*this};
};

template <class T>
CError CObject::createChild(T*& outChild, const CString& tag, const CString& name, bool templateRequired,
                            void* creationData, const CAttrMap* attributes)
{
    outChild = nullptr;
    if (templateRequired && !hasTemplate(tag)) {
        QEL_FAIL(fullName_, "@qelstr_CObject_createChild_NoTemplate Run-time template '%1' does not exist.",
                 tag);
    }
    CObject* child = nullptr;
    if (CError error = createChildRaw(child, tag, name, true)) {
        releaseObject(child);
        return reportError(std::move(error), __FILE__, __LINE__, fullName_);
    }
    T* typed = dynamic_cast<T*>(child);
    if (!typed) {
        releaseObject(child);
        QEL_FAIL(fullName_,
                 "@qelstr_CObject_createChild_InvalidObjectClass Object of invalid class created "
                 "(child tag '%1', child name '%2').",
                 tag, name);
    }
    // From here on the child is released where something fails.
    if (CError error = initNewChild(*child, creationData, attributes)) {
        return error;
    }
    outChild = typed;
    return {};
}

template <class T>
CError CObject::require(T*& out, const CString& path, const char* message, CSourcePlace where)
{
    out = dynamic_cast<T*>(findObject(path));
    return out ? CError() : reportError({}, where.file, where.line, fullName_, message, {path});
}

} // namespace qel
