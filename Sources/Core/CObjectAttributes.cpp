// Attributes: storing, {...} references, followers and deferred handlers.
#include "CObject.h"

#include <algorithm>

namespace qel {

namespace {

// No tree comes near these. They turn data that would expand for ever, or without bound, into an error.
constexpr int kMaxExpansions = 4096;
constexpr std::size_t kMaxValueLength = std::size_t{1} << 20;
constexpr int kMaxFollowDepth = 64;

// Changes of followed attributes run straight through chains of objects; a cycle would end on the stack.
thread_local int followDepth = 0;

struct FollowScope
{
    FollowScope() { ++followDepth; }
    ~FollowScope() { --followDepth; }
};

} // namespace

// --- reading

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

CString CObject::inheritedAttribute(const CString& name) const
{
    for (const CObject* object = this; object; object = object->parent_) {
        if (const CAttrValue* value = object->findAttr(name)) {
            return value->toString();
        }
    }
    return {};
}

// --- writing

CError CObject::setAttribute(const CString& key, const CString& value, bool immediate)
{
    if (isReadOnly_ || key.isEmpty()) {
        return {};
    }
    CString expanded = value;
    QEL_TRY(expand(key, expanded), fullName_);
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
    attributes_[key] = value;
    const std::int32_t index = classInfo_->attrIndex(key);
    if (index != CClassInfo::kNoIndex && immediate) {
        QEL_TRY(classInfo_->runHandler(index, *this), fullName_);
    } else if (index != CClassInfo::kNoIndex) {
        pendingAttrs_.resize(static_cast<std::size_t>(classInfo_->attrCount()));
        pendingAttrs_[static_cast<std::size_t>(index)] = 1;
    }
    return attributeListeners_.empty() ? CError() : tellListeners(key, value);
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
    return tellListeners(key, CAttrValue());
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

// --- followers

void CObject::listenAttribute(CObject& target, const CString& targetName, const CString& ownName)
{
    FollowedNames& names = target.attributeListeners_[this];
    if (targetName.isEmpty()) {
        names.clear();
    } else {
        names[targetName] = ownName;
    }
    attributeSources_.insert(&target);
}

CError CObject::tellListeners(const CString& key, const CAttrValue& value)
{
    // A follower may start or stop following, or end itself, another one or this object, while it is told.
    std::vector<CObject*> listeners;
    for (const auto& [listener, names] : attributeListeners_) {
        listeners.push_back(listener);
    }
    for (CObject* listener : listeners) {
        const auto entry = attributeListeners_.find(listener);
        if (isReleased_ || entry == attributeListeners_.end()) {
            continue;
        }
        const CHold hold(*listener);
        CString listenerKey = key;
        if (!entry->second.empty()) {
            const auto followed = entry->second.find(key);
            if (followed == entry->second.end()) {
                continue;
            }
            listenerKey = followed->second;
        }
        QEL_TRY(listener->onAttrChanged(*this, listenerKey, value), fullName_);
    }
    return {};
}

CError CObject::onAttrChanged(CObject&, const CString& key, const CAttrValue& value)
{
    const FollowScope scope;
    if (followDepth > kMaxFollowDepth) {
        QEL_FAIL(fullName_, "@qelstr_CObject_onAttrChanged_Cycle Attribute '%1' follows itself.", key);
    }
    return setAttribute(key, value, true);
}

void CObject::dropAttributeSources()
{
    for (CObject* source : attributeSources_) {
        source->attributeListeners_.erase(this);
    }
    attributeSources_.clear();
}

// --- references

CString CObject::getAttribute(const CString& expression)
{
    return resolveReference(expression, {});
}

CError CObject::expand(const CString& key, CString& value)
{
    // The last brace first, so that an inner reference is expanded before the outer, and what a reference
    // yields is expanded in its turn.
    for (int expansions = 0;; ++expansions) {
        const std::size_t open = value.findLast(u'{');
        const std::size_t close = open == CString::kNone ? open : value.find(u'}', open);
        if (close == CString::kNone) {
            return {};
        }
        CString expanded = value.substring(0, open);
        expanded += resolveReference(value.substring(open + 1, close - open - 1), key);
        expanded += value.substring(close + 1);
        if (expansions == kMaxExpansions || expanded.length() > kMaxValueLength) {
            QEL_FAIL(fullName_, "@qelstr_CObject_expand_Endless Value of attribute '%1' expands without end.",
                     key);
        }
        value = std::move(expanded);
    }
}

CString CObject::resolveReference(const CString& reference, const CString& key)
{
    if (reference.isEmpty()) {
        return getPresentValue(key);
    }
    if (reference[0] == u'*') {
        return resolveLiveReference(reference.substring(1), key);
    }
    if (reference[0] == u'/') {
        const std::size_t blank = reference.find(u' ');
        if (blank == CString::kNone) {
            return {};
        }
        const CObject* object = findObject(reference.substring(1, blank - 1));
        return object ? object->getAttrString(reference.substring(blank + 1)) : CString();
    }
    return inheritedAttribute(reference);
}

CString CObject::resolveLiveReference(const CString& reference, const CString& key)
{
    const std::vector<CString> words = reference.splitWords();
    if (words.size() < 2) {
        return {};
    }
    CObject* target = words[0].startsWith("/") ? findObject(words[0].substring(1)) : findNamedNear(words[0]);
    if (!target || target->isReadOnly_ || target == this) {
        return {};
    }
    listenAttribute(*target, words[1], key);
    // "scheme" names what a view is drawn with, not a text to copy.
    return words[1] == "scheme" ? CString() : target->getAttrString(words[1]);
}

CObject* CObject::findNamedNear(const CString& baseName) const
{
    for (const CObject* object = this; object; object = object->parent_) {
        const auto entry = object->numberedChildren_.find(baseName);
        if (entry != object->numberedChildren_.end() && !entry->second.empty()) {
            return entry->second.begin()->second;
        }
    }
    return nullptr;
}

} // namespace qel
