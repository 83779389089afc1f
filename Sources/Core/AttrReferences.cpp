// The {...} references in attribute values.
#include "AttrReferences.h"

#include "CObject.h"

namespace qel {

namespace {

// No tree comes near these. They turn data that would expand for ever, or without bound, into an error.
constexpr int kMaxExpansions = 4096;
constexpr std::size_t kMaxValueLength = std::size_t{1} << 20;

// The child of that name of the object or of the nearest parent that has one.
CObject* findNamedNear(const CObject& object, const CString& name)
{
    for (const CObject* holder = &object; holder; holder = holder->getParent()) {
        if (CObject* child = holder->findChild(name)) {
            return child;
        }
    }
    return nullptr;
}

CString resolveLiveReference(CObject& object, const CString& reference, const CString& key)
{
    const std::vector<CString> words = reference.splitWords();
    if (words.size() < 2) {
        return {};
    }
    CObject* target =
        words[0].startsWith("/") ? object.findObject(words[0].substring(1)) : findNamedNear(object, words[0]);
    if (!target || target->isReadOnly() || target == &object) {
        return {};
    }
    object.listenAttribute(*target, words[1], key);
    // "scheme" names what a view is drawn with, not a text to copy.
    return words[1] == "scheme" ? CString() : target->getAttrString(words[1]);
}

} // namespace

CError expandReferences(CObject& object, const CString& key, CString& value)
{
    for (int expansions = 0;; ++expansions) {
        const std::size_t open = value.findLast(u'{');
        const std::size_t close = open == CString::kNone ? open : value.find(u'}', open);
        if (close == CString::kNone) {
            return {};
        }
        CString expanded = value.substring(0, open);
        expanded += resolveReference(object, value.substring(open + 1, close - open - 1), key);
        expanded += value.substring(close + 1);
        if (expansions == kMaxExpansions || expanded.length() > kMaxValueLength) {
            QEL_FAIL(object.getFullName(),
                     "@qelstr_CObject_expand_Endless Value of attribute '%1' expands without end.", key);
        }
        value = std::move(expanded);
    }
}

CString resolveReference(CObject& object, const CString& reference, const CString& key)
{
    if (reference.isEmpty()) {
        return object.getPresentValue(key);
    }
    if (reference[0] == u'*') {
        return resolveLiveReference(object, reference.substring(1), key);
    }
    if (reference[0] == u'/') {
        const std::size_t blank = reference.find(u' ');
        if (blank == CString::kNone) {
            return {};
        }
        const CObject* source = object.findObject(reference.substring(1, blank - 1));
        return source ? source->getAttrString(reference.substring(blank + 1)) : CString();
    }
    return object.getInheritedAttribute(reference);
}

} // namespace qel
