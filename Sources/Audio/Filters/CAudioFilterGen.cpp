// Base of the filter generators.
#include "CAudioFilterGen.h"

namespace qel {

const CAudioFilterGen* CAudioFilterGen::findFrom(CObject& object, const CString& path)
{
    const auto* found = dynamic_cast<const CAudioFilterGen*>(object.findObject(path));
    for (const CObject* holder = &object; holder; holder = holder->getParent()) {
        if (holder == found) {
            return nullptr;
        }
    }
    return found;
}

void CAudioFilterGen::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterGen;
    CObject::buildClassInfo(info);
    info.bind<&Self::type_>("type", 0);
}

CError CAudioFilterGen::checkType(std::int32_t maxType, const char* message) const
{
    if (type_ < 0 || type_ > maxType) {
        QEL_FAIL(getFullName(), message, getAttrString("type"));
    }
    return {};
}

} // namespace qel
