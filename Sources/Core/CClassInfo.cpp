// What a class declares: its attributes with their handlers, and its event handlers.
#include "CClassInfo.h"

#include "CObject.h"

namespace qel {

void CClassInfo::declareAttr(const CString& name, CAttrHandler handler)
{
    const auto [entry, isNew] = indices_.try_emplace(name, attrCount());
    if (isNew) {
        handlers_.push(std::move(handler));
    } else {
        handlers_[static_cast<std::size_t>(entry->second)] = std::move(handler);
    }
}

std::int32_t CClassInfo::attrIndex(const CString& name) const
{
    const auto entry = indices_.find(name);
    return entry == indices_.end() ? kNoIndex : entry->second;
}

CError CClassInfo::runHandler(std::int32_t index, CObject& object) const
{
    return handlers_[static_cast<std::size_t>(index)](object);
}

const CEventHandler* CClassInfo::eventHandler(const CString& name) const
{
    const auto entry = eventHandlers_.find(name);
    return entry == eventHandlers_.end() ? nullptr : &entry->second;
}

namespace detail {

void readAttr(const CObject& object, const CString& name, bool& member, bool fallback)
{
    member = object.getAttrBool(name, fallback);
}

void readAttr(const CObject& object, const CString& name, std::int32_t& member, std::int32_t fallback)
{
    member = object.getAttrInt(name, fallback);
}

void readAttr(const CObject& object, const CString& name, double& member, double fallback)
{
    member = object.getAttrReal(name, fallback);
}

void readAttr(const CObject& object, const CString& name, CString& member, const CString& fallback)
{
    member = object.getAttrString(name, fallback);
}

} // namespace detail

} // namespace qel
