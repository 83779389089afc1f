// The node of every object tree: life cycle, children, release.
#include "CObject.h"

#include "CObjectPath.h"
#include "CreatorRegistry.h"
#include "NumberSyntax.h"
#include "Trace.h"

#include <algorithm>
#include <iterator>

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

// "item#3" is the base name "item" and the index 3.
struct NumberedName
{
    CString base;
    std::int32_t index = 0;
};

NumberedName splitName(const CString& name)
{
    const std::size_t hash = name.find(u'#');
    if (hash == CString::kNone) {
        return {name, 0};
    }
    return {name.substring(0, hash), parseInteger(name.substring(hash + 1)).value_or(0)};
}

using Numbered = std::map<std::int32_t, CObject*>;

// "#+N" counts from the lowest index, "#-N" from the highest, "#N" is the index itself.
CObject* childAt(const Numbered& children, const CString& position)
{
    const bool isFromFirst = position.startsWith("+");
    const bool isFromLast = position.startsWith("-");
    const auto number = parseInteger(isFromFirst || isFromLast ? position.substring(1) : position);
    if (!number) {
        return nullptr;
    }
    if (!isFromFirst && !isFromLast) {
        const auto entry = children.find(*number);
        return entry == children.end() ? nullptr : entry->second;
    }
    if (*number < 0 || static_cast<std::size_t>(*number) >= children.size()) {
        return nullptr;
    }
    return isFromFirst ? std::next(children.begin(), *number)->second
                       : std::next(children.rbegin(), *number)->second;
}

} // namespace

CObject::CObject() : classInfo_(&plainClassInfo()), root_(this) {}

CObject::~CObject()
{
    // Again, for a class whose release() forgot its base.
    dropEventSubscriptions();
    dropAttributeSources();
    for (const auto& [listener, names] : attributeListeners_) {
        listener->attributeSources_.erase(this);
    }
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
        QEL_TRY(replayTemplate(true), fullName_);
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
        QEL_TRY(replayTemplate(false), fullName_);
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
    dropAttributeSources();
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
    const CString& classTag = holder ? holder->contentTag_ : tag;

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

    NumberedName wanted = splitName(name);
    const std::int32_t index = takeIndex(wanted.base, wanted.index);
    numberedChildren_[wanted.base][index] = child;
    if (index != 0) {
        wanted.base += "#";
        wanted.base += CString::number(index);
    }
    child->fullName_ = fullName_.isEmpty() ? wanted.base : fullName_ + "." + wanted.base;
    child->attributes_["name"] = CAttrValue(wanted.base);
    child->attributes_["full-name"] = CAttrValue(child->fullName_);

    children_.push(child);
    outChild = child;
    QEL_TRY(onChildAdded(*child), fullName_);
    return {};
}

// The first user of a base name gets the index it wants; later ones count on from the counter when theirs is
// taken.
std::int32_t CObject::takeIndex(const CString& baseName, std::int32_t wanted)
{
    const auto [counter, isNew] = childCounters_.try_emplace(baseName, wanted);
    const auto& taken = numberedChildren_[baseName];
    while (taken.contains(wanted)) {
        // Wraps around rather than overflow: the data may name any index.
        counter->second = static_cast<std::int32_t>(static_cast<std::uint32_t>(counter->second) + 1u);
        wanted = counter->second;
    }
    return wanted;
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
    if (!children_.eraseFirst(&child)) {
        return;
    }
    const CString name = child.fullName_.substring(fullName_.isEmpty() ? 0 : fullName_.length() + 1);
    const NumberedName numbered = splitName(name);
    if (const auto indices = numberedChildren_.find(numbered.base); indices != numberedChildren_.end()) {
        indices->second.erase(numbered.index);
        if (indices->second.empty()) {
            numberedChildren_.erase(indices);
            childCounters_.erase(numbered.base);
        }
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
    const auto children = object->children_;
    for (std::size_t i = children.size(); i-- > 0;) {
        const auto& present = object->children_;
        if (std::find(present.begin(), present.end(), children[i]) != present.end()) {
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
    dropAttributeSources();
    notifyServer_ = nullptr;
    root_ = this;
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
    runTimeTemplates_[splitName(holder.getAttrString("name")).base] = &holder;
}

// --- finding

CObject* CObject::findChild(const CString& segment) const
{
    const std::size_t hash = segment.find(u'#');
    const auto entry = numberedChildren_.find(segment.substring(0, hash));
    if (entry == numberedChildren_.end() || entry->second.empty()) {
        return nullptr;
    }
    if (hash == CString::kNone) {
        return entry->second.begin()->second;
    }
    return childAt(entry->second, segment.substring(hash + 1));
}

CObject* CObject::findObject(const CString& path)
{
    return CObjectPath(path).findFrom(*this);
}

} // namespace qel
