// What a class declares: its attributes with their handlers, and its event handlers.
#pragma once

#include "CAttrValue.h"
#include "CError.h"
#include "CInlineArray.h"

#include <functional>

namespace qel {

class CObject;

// Runs when a declared attribute has changed; reads it from the object's map and stores a typed member.
using CAttrHandler = std::function<CError(CObject&)>;
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
class CClassInfo
{
public:
    static constexpr std::int32_t kNoIndex = -1;

    // Declares an attribute whose handler is the method CError Class::Method().
    template <auto Method>
    void handle(const char* name, CSourcePlace where = CSourcePlace::current());

    // Declares an attribute that is read into a bool, std::int32_t, double or CString member, `fallback` if
    // it is missing or does not convert; then runs the method, if one is given.
    template <auto Member, class Value>
    void bind(const char* name, Value fallback);
    template <auto Member, auto Method, class Value>
    void bind(const char* name, Value fallback, CSourcePlace where = CSourcePlace::current());

    // Declares the handler CError Class::Method(const CAttrMap&) of an event name.
    template <auto Method>
    void handleEvent(const char* name);

    void declareAttr(const CString& name, CAttrHandler handler);

    std::int32_t attrCount() const { return static_cast<std::int32_t>(handlers_.size()); }
    // Index of a declared attribute, or kNoIndex.
    std::int32_t attrIndex(const CString& name) const;
    CError runHandler(std::int32_t index, CObject& object) const;
    // The handler, or null.
    const CEventHandler* eventHandler(const CString& name) const;

private:
    CStringMap<std::int32_t> indices_;
    CInlineArray<CAttrHandler, 8> handlers_;
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

} // namespace detail

template <auto Method>
void CClassInfo::handle(const char* name, CSourcePlace where)
{
    declareAttr(name, [where](CObject& object) { return detail::callMethod<Method>(object, where); });
}

template <auto Member, class Value>
void CClassInfo::bind(const char* name, Value fallback)
{
    declareAttr(name, [key = CString(name), fallback](CObject& object) {
        detail::readAttr(object, key, detail::ownerOf<Member>(object).*Member, fallback);
        return CError();
    });
}

template <auto Member, auto Method, class Value>
void CClassInfo::bind(const char* name, Value fallback, CSourcePlace where)
{
    declareAttr(name, [key = CString(name), fallback, where](CObject& object) {
        detail::readAttr(object, key, detail::ownerOf<Member>(object).*Member, fallback);
        return detail::callMethod<Method>(object, where);
    });
}

template <auto Method>
void CClassInfo::handleEvent(const char* name)
{
    eventHandlers_[name] = [](CObject& object, const CAttrMap& parameters) {
        return (detail::ownerOf<Method>(object).*Method)(parameters);
    };
}

} // namespace qel
