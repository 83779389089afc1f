// What a class declares: its attributes with their handlers, and its event handlers.
#pragma once

#include "CAttrValue.h"
#include "CError.h"
#include "CInlineArray.h"

#include <functional>
#include <optional>

namespace qel {

class CObject;

// Runs when a declared attribute has changed; reads it from the object's map and stores a typed member.
using CAttrHandler = std::function<CError(CObject&)>;
// Reads an attribute into the member that it is bound to.
using CAttrFill = std::function<void(CObject&)>;
// Runs when an event arrives that the object listens to.
using CEventHandler = std::function<CError(CObject&, const CAttrMap& parameters)>;

// Where in the sources something was declared. As std::source_location, which not every compiler we use has.
struct CSourcePlace
{
    const char* file;
    int line;

    static constexpr CSourcePlace current(const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        return {file, line};
    }
};

// One per registered tag, built once when the application starts and never changed afterwards, so any thread
// may read it. A class's static buildClassInfo() calls that of its base first, so indices of the base come
// first; declaring a name twice keeps the first index and takes the later handler, which lets a class refine
// what its base declared.
//
//     void CTimer::buildClassInfo(CClassInfo& info)
//     {
//         CObject::buildClassInfo(info);
//         info.bind<&CTimer::intervalSec_, &CTimer::attrInterval>("interval", 0.0);
//     }
//
// Bound members hold their values, or the defaults, as soon as CObject::init() returns; a later change of an
// attribute reads them anew before the method runs.
class CClassInfo
{
public:
    static constexpr std::int32_t kNoIndex = -1;

    // Declares an attribute whose handler is the method CError Class::Method().
    template <auto Method>
    void handle(const char* name, CSourcePlace where = CSourcePlace::current());

    // Declares an attribute that is read into a bool, std::int32_t, double, CString or std::optional<CString>
    // member, `fallback` if it is missing or does not convert; then runs the method, if one is given.
    template <auto Member, class Value>
    void bind(const char* name, Value fallback);
    template <auto Member, auto Method, class Value>
    void bind(const char* name, Value fallback, CSourcePlace where = CSourcePlace::current());

    // Declares the handler CError Class::Method(const CAttrMap&) of an event name.
    template <auto Method>
    void handleEvent(const char* name);

    // `fill` reads the attribute into a member; it may be empty.
    void declareAttr(const CString& name, CAttrHandler handler, CAttrFill fill = {});

    std::int32_t attrCount() const { return static_cast<std::int32_t>(attrs_.size()); }
    // Index of a declared attribute, or kNoIndex.
    std::int32_t attrIndex(const CString& name) const;
    CError runHandler(std::int32_t index, CObject& object) const;
    // Reads all bound attributes of the object into their members.
    void fillMembers(CObject& object) const;
    // The handler, or null.
    const CEventHandler* eventHandler(const CString& name) const;

private:
    struct CAttr
    {
        CAttrHandler handler;
        CAttrFill fill; // empty: not bound to a member
    };

    CStringMap<std::int32_t> indices_;
    CInlineArray<CAttr, 8> attrs_;
    CStringMap<CEventHandler> eventHandlers_;
};

namespace detail {

template <class T>
struct MemberPointer;
template <class Class, class Type>
struct MemberPointer<Type Class::*>
{
    using Owner = Class;
    using Value = Type;
};
template <class Class>
struct MemberPointer<CError (Class::*)()>
{
    using Owner = Class;
};
template <class Class>
struct MemberPointer<CError (Class::*)(const CAttrMap&)>
{
    using Owner = Class;
};

// Handlers are installed by the class itself, so the object is one of it.
template <auto Member>
auto& ownerOf(CObject& object)
{
    return static_cast<typename MemberPointer<decltype(Member)>::Owner&>(object);
}

template <auto Method>
CError callMethod(CObject& object, const CSourcePlace& where)
{
    if (CError error = (ownerOf<Method>(object).*Method)()) {
        return reportError(std::move(error), where.file, where.line);
    }
    return {};
}

void readAttr(const CObject& object, const CString& name, bool& member, bool fallback);
void readAttr(const CObject& object, const CString& name, std::int32_t& member, std::int32_t fallback);
void readAttr(const CObject& object, const CString& name, double& member, double fallback);
void readAttr(const CObject& object, const CString& name, CString& member, const CString& fallback);
// Without a value where the attribute is missing.
void readAttr(const CObject& object, const CString& name, std::optional<CString>& member, std::nullopt_t);

template <auto Member, class Value>
CAttrFill fillOf(const char* name, Value fallback)
{
    return [key = CString(name), fallback](CObject& object) {
        readAttr(object, key, ownerOf<Member>(object).*Member, fallback);
    };
}

} // namespace detail

template <auto Method>
void CClassInfo::handle(const char* name, CSourcePlace where)
{
    declareAttr(name, [where](CObject& object) { return detail::callMethod<Method>(object, where); });
}

template <auto Member, class Value>
void CClassInfo::bind(const char* name, Value fallback)
{
    const CAttrFill fill = detail::fillOf<Member>(name, fallback);
    declareAttr(
        name,
        [fill](CObject& object) {
            fill(object);
            return CError();
        },
        fill);
}

template <auto Member, auto Method, class Value>
void CClassInfo::bind(const char* name, Value fallback, CSourcePlace where)
{
    const CAttrFill fill = detail::fillOf<Member>(name, fallback);
    declareAttr(
        name,
        [fill, where](CObject& object) {
            fill(object);
            return detail::callMethod<Method>(object, where);
        },
        fill);
}

template <auto Method>
void CClassInfo::handleEvent(const char* name)
{
    eventHandlers_[name] = [](CObject& object, const CAttrMap& parameters) {
        return (detail::ownerOf<Method>(object).*Method)(parameters);
    };
}

} // namespace qel
