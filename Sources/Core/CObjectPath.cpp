// The path language by which the nodes of a tree find each other.
#include "CObjectPath.h"

#include "CObject.h"

#include <algorithm>

namespace qel {

namespace {

constexpr std::string_view kSharedPrefix = "shared::";

// An attribute may hold a path with a "$" again; this many in one path are a cycle.
constexpr int kMaxVariables = 64;

bool isMark(char16_t c)
{
    return c == u'/' || c == u'^' || c == u'$' || c == u'.';
}

// "a.b" -> "a", "a" -> "".
CString parentName(const CString& name)
{
    const std::size_t dot = name.findLast(u'.');
    return dot == CString::kNone ? CString() : name.substring(0, dot);
}

// "row#+1" and "row#-0" count among the children that are there.
bool isPosition(const CString& segment)
{
    const std::size_t hash = segment.find(u'#');
    const bool isMore = hash != CString::kNone && hash + 1 < segment.length();
    return isMore && (segment[hash + 1] == u'+' || segment[hash + 1] == u'-');
}

} // namespace

CObjectPath::CObjectPath(const CString& path) : path_(path) {}

CObjectPath::Steps CObjectPath::split(const CString& path, std::size_t start)
{
    using enum Step::Kind;
    Steps steps;
    std::size_t i = start;
    while (i < path.length()) {
        const char16_t mark = path[i];
        std::size_t end = i + 1;
        if (mark == u'$') {
            end = std::min(path.find(u'.', i), path.length());
            steps.push_back({kVariable, path.substring(i + 1, end - i - 1)});
        } else if (isMark(mark)) {
            steps.push_back({mark == u'/' ? kRoot : mark == u'^' ? kParent : kHere, {}});
        } else {
            while (end < path.length() && !isMark(path[end])) {
                ++end;
            }
            if (end == path.length() || path[end] == u'.') {
                steps.push_back({kChild, path.substring(i, end - i)});
            }
        }
        i = end;
    }
    return steps;
}

void CObjectPath::step(const Step& step, Place& place)
{
    using enum Step::Kind;
    place.isComplete = step.kind != kRoot && step.kind != kVariable;
    if (step.kind == kParent) {
        if (place.object) {
            place.object = place.object->getParent();
            place.isNamed = false;
        } else {
            place.isNamed = place.isNamed && !place.missingName.isEmpty();
            place.missingName = parentName(place.missingName);
        }
    } else if (step.kind == kChild) {
        CObject* const parent = place.object;
        if (parent && (place.object = parent->findChild(step.text))) {
            return;
        }
        const CString before = parent ? parent->getFullName() : place.missingName;
        place.isNamed = (parent || place.isNamed) && !isPosition(step.text);
        place.missingName = before.isEmpty() ? step.text : before + "." + step.text;
    }
}

CObjectPath::Place CObjectPath::walk(CObject& from) const
{
    Place place;
    std::size_t start = 0;
    if (path_.startsWith(kSharedPrefix)) {
        place.object = CObject::sharedObject();
        start = kSharedPrefix.size();
    } else {
        const bool isRelative = !path_.isEmpty() && isMark(path_[0]) && path_[0] != u'/';
        place.object = isRelative ? &from : from.getRoot();
    }
    Steps steps = split(path_, start);
    int variables = 0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& current = steps[i];
        step(current, place);
        if (current.kind == Step::Kind::kRoot) {
            place.object = from.getRoot();
        } else if (current.kind == Step::Kind::kVariable) {
            if (++variables > kMaxVariables) {
                return {};
            }
            const CString value = place.object ? place.object->getAttrString(current.text) : CString();
            const Steps inner = split(value, 0);
            steps.insert(steps.begin() + static_cast<std::ptrdiff_t>(i) + 1, inner.begin(), inner.end());
        }
    }
    return place;
}

CObject* CObjectPath::findFrom(CObject& from) const
{
    const Place place = walk(from);
    return place.isComplete ? place.object : nullptr;
}

CString CObjectPath::nameFrom(CObject& from) const
{
    const Place place = walk(from);
    if (!place.isComplete) {
        return path_;
    }
    if (place.object) {
        return place.object->getFullName();
    }
    return place.isNamed ? place.missingName : path_;
}

} // namespace qel
