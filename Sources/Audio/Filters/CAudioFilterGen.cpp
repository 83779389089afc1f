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

CError CAudioFilterGen::readType(std::int32_t& type, std::int32_t maxType, const char* message)
{
    type = getAttrInt("type");
    if (type < 0 || type > maxType) {
        QEL_FAIL(getFullName(), message, getAttrString("type"));
    }
    return {};
}

} // namespace qel
