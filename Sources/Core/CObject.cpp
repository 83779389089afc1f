// The node of every object tree.
#include "CObject.h"

#include "AttrReferences.h"
#include "CNodeCursor.h"
#include "CNodeLoader.h"
#include "CNotifyServer.h"
#include "CObjectPath.h"
#include "CreatorRegistry.h"
#include "Streams/CResourceReader.h"
#include "Trace.h"

namespace qel {

namespace {

CObject* theSharedObject = nullptr;

const CClassInfo& plainClassInfo()
{
    static const CClassInfo info = [] {
        CClassInfo built;
        CObject::buildClassInfo(built);
        return built;
    }();
    return info;
}

// Changes of followed attributes run straight through chains of objects; a cycle would end on the stack.
constexpr int kMaxFollowDepth = 64;
thread_local int followDepth = 0;

struct FollowScope
{
    FollowScope() { ++followDepth; }
    ~FollowScope() { --followDepth; }
};

constexpr std::uint32_t kTreeChunkId = 0x6C6D7863; // "cxml"

} // namespace

CObject::CObject() : classInfo_(&plainClassInfo()), root_(this) {}

CObject::~CObject()
{
    // Again, for a class whose release() forgot its base.
    dropEventSubscriptions();
}

void CObject::buildClassInfo(CClassInfo& info)
{
    info.handleEvent<&CObject::onReleaseChild>("release-child-bridged");
}

CObject::CHold::~CHold()
{
    if (--object_.holds_ == 0 && object_.isReleased_) {
        delete &object_;
    }
}

CObject* CObject::sharedObject()
{
    return theSharedObject;
}

void CObject::setSharedObject(CObject* object)
{
    theSharedObject = object;
}

// --- life cycle

CError CObject::init()
{
    if (template_) {
        QEL_TRY(CNodeLoader::replayTemplate(*this, true), fullName_);
    }
    if (creationAttrs_) {
        QEL_TRY(setAttributes(*creationAttrs_, false), fullName_);
    }
    classInfo_->fillMembers(*this);
    initState_ = InitState::kInitDone;
    return {};
}

CError CObject::applyAttrs()
{
    QEL_TRY(applyPendingAttrs(), fullName_);
    initState_ = InitState::kAttrsApplied;
    if (template_) {
        QEL_TRY(CNodeLoader::replayTemplate(*this, false), fullName_);
    }
    return {};
}

CError CObject::initChilds()
{
    isReadOnly_ = sharedObject() == nullptr;
    initState_ = InitState::kChildsDone;
    return {};
}

CError CObject::onChildAdded(CObject&)
{
    return {};
}

void CObject::onChildRemoved(CObject&) {}

void CObject::release()
{
    dropEventSubscriptions();
    attrFollowers_.stopFollowing();
}

void CObject::detach()
{
    if (parent_) {
        parent_->removeChild(*this);
    }
}

CError CObject::onReleaseChild(const CAttrMap& parameters)
{
    const auto sender = parameters.find("sender");
    if (sender != parameters.end()) {
        releaseObject(findObject(sender->second.toString()));
    }
    return {};
}

// --- children

CError CObject::createChildRaw(CObject*& outChild, const CString& tag, const CString& name, bool useTemplates)
{
    outChild = nullptr;
    if (isReadOnly_) {
        QEL_FAIL(fullName_, "@qelstr_CObject_addChild_ReadOnly Error adding child to read-only object.");
    }
    const CObject* holder = useTemplates ? findTemplate(tag) : nullptr;
    const CString& classTag = holder ? holder->templateBody_->contentTag : tag;

    CObject* child = createRegistered(classTag);
    if (!child) {
        child = new CObject();
        if (isTracing() && !(classTag == "template") && !(classTag == "content")) {
            trace("Creating CObject \"" + name + "\" (tag \"" + classTag + "\")", fullName_);
        }
    }
    child->template_ = holder;
    child->parent_ = this;
    child->root_ = root_;
    child->tag_ = tag;
    child->notifyServer_ = notifyServer_;
    child->numberObject();

    const CString childName = children_.add(*child, name);
    if (!fullName_.isEmpty()) {
        child->fullName_ = fullName_;
        child->fullName_ += u'.';
    }
    child->fullName_ += childName;
    child->attributes_.emplace("name", childName);
    child->attributes_.emplace("full-name", child->fullName_);

    outChild = child;
    QEL_TRY(onChildAdded(*child), fullName_);
    return {};
}

CError CObject::initNewChild(CObject& child, void* creationData, const CAttrMap* attributes)
{
    // Either may be released by what runs now.
    const CHold hold(*this);
    const CHold childHold(child);
    CError error = child.start(creationData, attributes);
    if (error) {
        error = reportError(std::move(error), __FILE__, __LINE__, child.fullName_);
        releaseObject(&child);
    }
    return error;
}

CError CObject::start(void* creationData, const CAttrMap* attributes)
{
    creationData_ = creationData;
    if (attributes) {
        // Set now, so that references in the template's attributes can see them, and again by init(), over
        // the template.
        QEL_TRY(setAttributes(*attributes, false), fullName_);
    }
    creationAttrs_ = attributes;
    CError error = init();
    creationAttrs_ = nullptr;
    QEL_TRY(std::move(error), fullName_);
    if (!isReleased_) {
        QEL_TRY(applyAttrs(), fullName_);
    }
    if (!isReleased_) {
        QEL_TRY(initChilds(), fullName_);
    }
    if (isReleased_) {
        QEL_FAIL(fullName_, "@qelstr_CObject_createChild_Released Object was released while it came up.");
    }
    return {};
}

void CObject::removeChild(CObject& child)
{
    onChildRemoved(child);
    if (!children_.remove(child,
                          child.fullName_.substring(fullName_.isEmpty() ? 0 : fullName_.length() + 1))) {
        return;
    }
    if (child.isTemplate_) {
        std::erase_if(runTimeTemplates_, [&](const auto& entry) { return entry.second == &child; });
    }
    child.parent_ = nullptr;
}

void CObject::releaseObject(CObject* object)
{
    if (!object || object->isReleased_) {
        return;
    }
    object->isReleased_ = true;
    // What release() calls may hold the object too; the last hold destroys it.
    const CHold hold(*object);
    object->release();
    // A child's release may end its siblings, so each is looked for again before it is touched.
    const auto children = object->children_.all();
    for (std::size_t i = children.size(); i-- > 0;) {
        if (object->children_.contains(children[i])) {
            releaseObject(children[i]);
        }
    }
    object->detach();
    if (object->holds_ > 1) {
        object->leaveTree();
    }
}

// The rest of the tree may be gone before the last hold on this ends.
void CObject::leaveTree()
{
    dropEventSubscriptions();
    attrFollowers_.stopFollowing();
    notifyServer_ = nullptr;
    root_ = this;
}

CError CObject::loadCompiled(const CString& fileName, bool fullInit)
{
    CByteBuffer tree;
    {
        CResourceReader reader;
        QEL_TRY(reader.open(fileName), fullName_);
        QEL_TRY(reader.readCompressedData(tree, kTreeChunkId), fullName_);
    }
    // The file's root node has neither tag nor name: what it holds lands on this object.
    CNodeCursor cursor(tree.bytes());
    QEL_TRY(loadNode(cursor, fullInit, true, false, false), fullName_);
    return {};
}

CError CObject::loadNode(CNodeCursor& cursor, bool fullInit, bool skipHead, bool skipAttributes,
                         bool skipChildren)
{
    return CNodeLoader(cursor).load(*this, fullInit, skipHead, skipAttributes, skipChildren);
}

// --- templates

const CObject* CObject::findTemplate(const CString& name) const
{
    for (const CObject* object = this; object; object = object->parent_) {
        if (const auto entry = object->runTimeTemplates_.find(name);
            entry != object->runTimeTemplates_.end()) {
            return entry->second;
        }
    }
    if (!theSharedObject) {
        return nullptr;
    }
    const auto entry = theSharedObject->runTimeTemplates_.find(name);
    return entry == theSharedObject->runTimeTemplates_.end() ? nullptr : entry->second;
}

void CObject::registerTemplate(CObject& holder)
{
    // By base name: a second template of the same name is numbered as a child, but takes the place of the
    // first.
    runTimeTemplates_[CChildList::baseOf(holder.getAttrString("name"))] = &holder;
}

// --- finding

CObject* CObject::findObject(const CString& path)
{
    return CObjectPath(path).findFrom(*this);
}

// --- attributes

const CAttrValue* CObject::findAttr(const CString& name) const
{
    const auto entry = attributes_.find(name);
    return entry == attributes_.end() ? nullptr : &entry->second;
}

bool CObject::getAttrBool(const CString& name, bool fallback) const
{
    const CAttrValue* value = findAttr(name);
    return value ? value->toBool().value_or(fallback) : fallback;
}

double CObject::getAttrReal(const CString& name, double fallback) const
{
    const CAttrValue* value = findAttr(name);
    return value ? value->toReal().value_or(fallback) : fallback;
}

std::int32_t CObject::getAttrInt(const CString& name, std::int32_t fallback) const
{
    const CAttrValue* value = findAttr(name);
    return value ? value->toInteger().value_or(fallback) : fallback;
}

CString CObject::getAttrString(const CString& name, const CString& fallback) const
{
    const CAttrValue* value = findAttr(name);
    return value ? value->toString() : fallback;
}

CString CObject::getInheritedAttribute(const CString& name) const
{
    for (const CObject* object = this; object; object = object->parent_) {
        if (const CAttrValue* value = object->findAttr(name)) {
            return value->toString();
        }
    }
    return {};
}

CString CObject::getAttribute(const CString& expression)
{
    return resolveReference(*this, expression, {});
}

CError CObject::setAttribute(const CString& key, const CString& value, bool immediate)
{
    if (isReadOnly_ || key.isEmpty()) {
        return {};
    }
    if (value.find(u'{') == CString::kNone) {
        return storeAttribute(key, CAttrValue(value), immediate);
    }
    CString expanded = value;
    QEL_TRY(expandReferences(*this, key, expanded), fullName_);
    return storeAttribute(key, CAttrValue(std::move(expanded)), immediate);
}

CError CObject::setAttribute(const CString& key, const CAttrValue& value, bool immediate)
{
    if (value.kind() == CAttrValue::Kind::kString) {
        return setAttribute(key, value.toString(), immediate);
    }
    if (isReadOnly_ || key.isEmpty()) {
        return {};
    }
    return storeAttribute(key, value, immediate);
}

CError CObject::setAttributes(const CAttrMap& attributes, bool applyNow)
{
    const CHold hold(*this);
    for (const auto& [key, value] : attributes) {
        QEL_TRY(setAttribute(key, value, false), fullName_);
    }
    return applyNow ? applyPendingAttrs() : CError();
}

CError CObject::storeAttribute(const CString& key, CAttrValue value, bool immediate)
{
    const CHold hold(*this); // the handler and the followers may release this
    CError diverted;
    if (divertAttribute(key, value, diverted)) {
        return diverted;
    }
    attributes_.insert_or_assign(key, value);
    const std::int32_t index = classInfo_->attrIndex(key);
    if (index != CClassInfo::kNoIndex && immediate) {
        QEL_TRY(classInfo_->runHandler(index, *this), fullName_);
    } else if (index != CClassInfo::kNoIndex) {
        pendingAttrs_.resize(static_cast<std::size_t>(classInfo_->attrCount()));
        pendingAttrs_[static_cast<std::size_t>(index)] = 1;
    }
    return attrFollowers_.tell(key, value);
}

CError CObject::removeAttribute(const CString& key)
{
    const CHold hold(*this);
    if (isReadOnly_ || attributes_.erase(key) == 0) {
        return {};
    }
    const std::int32_t index = classInfo_->attrIndex(key);
    if (index != CClassInfo::kNoIndex) {
        QEL_TRY(classInfo_->runHandler(index, *this), fullName_);
    }
    return attrFollowers_.tell(key, CAttrValue());
}

CError CObject::applyPendingAttrs()
{
    if (isReadOnly_) {
        return {};
    }
    const CHold hold(*this);
    for (std::size_t i = 0; i < pendingAttrs_.size() && !isReleased_; ++i) {
        if (pendingAttrs_[i]) {
            pendingAttrs_[i] = 0;
            QEL_TRY(classInfo_->runHandler(static_cast<std::int32_t>(i), *this), fullName_);
        }
    }
    return {};
}

void CObject::listenAttribute(CObject& target, const CString& targetName, const CString& ownName)
{
    attrFollowers_.follow(target.attrFollowers_, targetName, ownName);
}

CError CObject::onAttrChanged(CObject&, const CString& key, const CAttrValue& value)
{
    const FollowScope scope;
    if (followDepth > kMaxFollowDepth) {
        QEL_FAIL(fullName_, "@qelstr_CObject_onAttrChanged_Cycle Attribute '%1' follows itself.", key);
    }
    return setAttribute(key, value, true);
}

// --- events

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
