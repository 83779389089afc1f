// The children of an object, by place and by name.
#include "CChildList.h"

#include "NumberSyntax.h"

#include <algorithm>

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
    const NumberedName wanted = splitName(name);
    Family& family = families_.try_emplace(wanted.base, Family{wanted.index}).first->second;
    std::int32_t index = wanted.index;
    while (family.find(index)) {
        // Wraps around rather than overflow: the data may name any index.
        family.counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(family.counter) + 1u);
        index = family.counter;
    }
    family.members.insert(family.placeOf(index), {index, &child});
    children_.push(&child);
    return index == 0 ? wanted.base : wanted.base + "#" + CString::number(index);
}

bool CChildList::remove(CObject& child, const CString& name)
{
    if (!children_.eraseLast(&child)) {
        return false;
    }
    const NumberedName numbered = splitName(name);
    if (const auto entry = families_.find(numbered.base); entry != families_.end()) {
        Family& family = entry->second;
        if (family.find(numbered.index)) {
            family.members.erase(family.placeOf(numbered.index));
        }
        if (family.members.isEmpty()) {
            families_.erase(entry);
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
    const bool isPlain = hash == CString::kNone;
    const auto entry = families_.find(isPlain ? segment : segment.substring(0, hash));
    if (entry == families_.end()) {
        return nullptr;
    }
    return isPlain ? entry->second.members[0].child : entry->second.findAt(segment.substring(hash + 1));
}

// The first member that has this index or a higher one.
std::size_t CChildList::Family::placeOf(std::int32_t index) const
{
    const auto place = std::ranges::lower_bound(members, index, {}, &Numbered::index);
    return static_cast<std::size_t>(place - members.begin());
}

CObject* CChildList::Family::find(std::int32_t index) const
{
    const std::size_t place = placeOf(index);
    return place < members.size() && members[place].index == index ? members[place].child : nullptr;
}

// "#+N" counts from the lowest index, "#-N" from the highest, "#N" is the index itself.
CObject* CChildList::Family::findAt(const CString& position) const
{
    const bool isFromFirst = position.startsWith("+");
    const bool isFromLast = position.startsWith("-");
    const auto number = parseInteger(isFromFirst || isFromLast ? position.substring(1) : position);
    if (!number) {
        return nullptr;
    }
    if (!isFromFirst && !isFromLast) {
        return find(*number);
    }
    const auto steps = static_cast<std::size_t>(*number);
    if (*number < 0 || steps >= members.size()) {
        return nullptr;
    }
    return members[isFromFirst ? steps : members.size() - 1 - steps].child;
}

CString CChildList::baseOf(const CString& name)
{
    return splitName(name).base;
}

} // namespace qel
