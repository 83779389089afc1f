// What a tree of process definitions declares.
#include "Definitions/CAudioDeclarations.h"

#include "CAudioParamDef.h"
#include "CAudioParamFilterDef.h"
#include "Definitions/CAudioParamRemapDef.h"

namespace qel {

void CAudioDeclarations::collect(const CObject& node, const CString& name)
{
    for (std::size_t i = 0; i < node.getChildCount(); ++i) {
        const CObject& child = *node.getChild(i);
        const CString childName = name + "." + child.getName();
        if (const auto* remap = dynamic_cast<const CAudioParamRemapDef*>(&child)) {
            remaps.push_back({name, remap});
        } else if (const auto* filter = dynamic_cast<const CAudioParamFilterDef*>(&child)) {
            filters.push_back({name, filter});
        } else if (const auto* param = dynamic_cast<const CAudioParamDef*>(&child)) {
            if (param->getInfo().isGlobal) {
                globals.push_back({childName, param});
            }
        } else {
            collect(child, childName);
        }
    }
}

} // namespace qel
