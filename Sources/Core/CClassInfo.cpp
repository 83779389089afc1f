// What a class declares: its attributes with their handlers, and its event handlers.
#include "CClassInfo.h"

#include "CObject.h"

namespace qel {

void CClassInfo::declareAttr(const CString& name, CAttrHandler handler, CAttrFill fill)
{
    const auto [entry, isNew] = indices_.try_emplace(name, attrCount());
    if (isNew) {
        attrs_.push({std::move(handler), std::move(fill)});
    } else {
        attrs_[static_cast<std::size_t>(entry->second)] = {std::move(handler), std::move(fill)};
    }
}

std::int32_t CClassInfo::attrIndex(const CString& name) const
{
    const auto entry = indices_.find(name);
    return entry == indices_.end() ? kNoIndex : entry->second;
}

CError CClassInfo::runHandler(std::int32_t index, CObject& object) const
{
    return attrs_[static_cast<std::size_t>(index)].handler(object);
}

void CClassInfo::fillMembers(CObject& object) const
{
    for (const CAttr& attr : attrs_) {
        if (attr.fill) {
            attr.fill(object);
        }
    }
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

void readAttr(const CObject& object, const CString& name, std::optional<CString>& member, std::nullopt_t)
{
    const CAttrValue* value = object.findAttr(name);
    member = value ? std::optional<CString>(value->toString()) : std::nullopt;
}

} // namespace detail

} // namespace qel
