// The path language by which the nodes of a tree find each other.
#include "CObject.h"

#include "NumberSyntax.h"

#include <iterator>

namespace qel {

namespace {

constexpr std::string_view kSharedPrefix = "shared::";

// An attribute may hold a path with a "$" again; this many in one path are a cycle.
constexpr int kMaxVariables = 64;

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

CObject* CObject::findObject(const CString& wholePath)
{
    if (wholePath.isEmpty()) {
        return nullptr;
    }
    CString path = wholePath;
    const char16_t first = path[0];
    CObject* current = root_;
    std::size_t i = 0;
    if (first == u'.' || first == u'^' || first == u'$') {
        current = this;
    } else if (path.startsWith(kSharedPrefix)) {
        current = sharedObject();
        i = kSharedPrefix.size();
    }

    std::size_t segmentStart = i;
    int variables = 0;
    while (current && i < path.length()) {
        const bool isLast = i + 1 == path.length();
        switch (path[i]) {
        case u'/':
            current = root_;
            break;
        case u'^':
            current = current->parent_;
            if (isLast) {
                return current;
            }
            break;
        case u'$': {
            if (++variables > kMaxVariables) {
                return nullptr;
            }
            const std::size_t dot = path.find(u'.', i);
            const CString name = path.substring(i + 1, dot == CString::kNone ? dot : dot - i - 1);
            path = current->getAttrString(name) + path.substring(dot);
            i = 0;
            segmentStart = 0;
            continue;
        }
        case u'.':
            if (i > segmentStart) {
                current = current->findChild(path.substring(segmentStart, i - segmentStart));
            }
            if (isLast) {
                return current;
            }
            break;
        default:
            ++i;
            continue;
        }
        ++i;
        segmentStart = i;
    }
    return current && segmentStart < path.length() ? current->findChild(path.substring(segmentStart))
                                                   : nullptr;
}

} // namespace qel
