// The children of an object, by place and by name.
#include "CChildList.h"

#include "NumberSyntax.h"

#include <algorithm>
#include <iterator>

namespace qel {

namespace {

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

} // namespace

CString CChildList::add(CObject& child, const CString& name)
{
    NumberedName wanted = splitName(name);
    const std::int32_t index = takeIndex(wanted.base, wanted.index);
    numbered_[wanted.base][index] = &child;
    children_.push(&child);
    return index == 0 ? wanted.base : wanted.base + "#" + CString::number(index);
}

std::int32_t CChildList::takeIndex(const CString& baseName, std::int32_t wanted)
{
    const auto [counter, isNew] = counters_.try_emplace(baseName, wanted);
    const auto& taken = numbered_[baseName];
    while (taken.contains(wanted)) {
        // Wraps around rather than overflow: the data may name any index.
        counter->second = static_cast<std::int32_t>(static_cast<std::uint32_t>(counter->second) + 1u);
        wanted = counter->second;
    }
    return wanted;
}

bool CChildList::remove(CObject& child, const CString& name)
{
    if (!children_.eraseFirst(&child)) {
        return false;
    }
    const NumberedName numbered = splitName(name);
    if (const auto indices = numbered_.find(numbered.base); indices != numbered_.end()) {
        indices->second.erase(numbered.index);
        if (indices->second.empty()) {
            numbered_.erase(indices);
            counters_.erase(numbered.base);
        }
    }
    return true;
}

bool CChildList::contains(const CObject* child) const
{
    return std::find(children_.begin(), children_.end(), child) != children_.end();
}

CObject* CChildList::find(const CString& segment) const
{
    const std::size_t hash = segment.find(u'#');
    const auto entry = numbered_.find(segment.substring(0, hash));
    if (entry == numbered_.end() || entry->second.empty()) {
        return nullptr;
    }
    if (hash == CString::kNone) {
        return entry->second.begin()->second;
    }
    return childAt(entry->second, segment.substring(hash + 1));
}

// "#+N" counts from the lowest index, "#-N" from the highest, "#N" is the index itself.
CObject* CChildList::childAt(const Numbered& children, const CString& position)
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

CString CChildList::baseOf(const CString& name)
{
    return splitName(name).base;
}

} // namespace qel
