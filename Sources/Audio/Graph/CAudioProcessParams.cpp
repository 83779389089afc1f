// Makes the parameters that a tree of process definitions declares.
#include "CAudioProcessParams.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"
#include "CAudioParamFilterDef.h"
#include "Definitions/CAudioParamRemapDef.h"
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

namespace {

// "^^name" climbs one level of `owner` for each "^"; "/name" starts at the root; any other name is below the
// owner.
CString remapTarget(const CString& owner, const CString& target)
{
    if (target.startsWith("/")) {
        return target.substring(1);
    }
    CString base = owner;
    std::size_t climbed = 0;
    for (; climbed < target.length() && target[climbed] == u'^'; ++climbed) {
        const std::size_t dot = base.findLast(u'.');
        base = dot == CString::kNone ? CString() : base.substring(0, dot);
    }
    const CString name = target.substring(climbed);
    return base.isEmpty() ? name : base + "." + name;
}

} // namespace

CAudioProcessParams::~CAudioProcessParams()
{
    for (const auto& filter : filters_) {
        filter->release();
    }
}

CError CAudioProcessParams::declare(const CAudioProcessDefBase& def, const CString& processName,
                                    CAudioParamCollector& params)
{
    const CAudioDeclarations& declarations = def.declarations();
    // A parent may remap what a child declares as global, so all remaps come first; filters need the
    // parameters.
    for (const auto& [name, remap] : declarations.remaps) {
        const CString owner = processName + name;
        params.addRemap(owner + "." + remap->getOrigName(), remapTarget(owner, remap->getNewName()));
    }
    for (const auto& [name, param] : declarations.globals) {
        const CString fullName = processName + name;
        if (!params.isRemapped(fullName)) {
            params.getParam(fullName).setInfo(param->shareInfo(), param->getFullName());
        }
    }
    for (const auto& [name, filterDef] : declarations.filters) {
        filters_.emplace_back(filterDef->createFilter());
        QEL_TRY(filters_.back()->init(params, processName + name, filterDef->getSourceNames(),
                                      filterDef->getDestinationNames()),
                filterDef->getFullName());
    }
    return {};
}

} // namespace qel
