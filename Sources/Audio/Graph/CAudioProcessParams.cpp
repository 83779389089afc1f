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

CString childName(const CObject& child, const CString& parentName)
{
    return parentName + "." + child.getName();
}

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
    // A parent may remap what a child declares as global, so all remaps come first; filters need the
    // parameters.
    enterRemaps(def, processName, params);
    makeGlobals(def, processName, params);
    QEL_TRY(startFilters(def, processName, params), processName);
    return {};
}

void CAudioProcessParams::enterRemaps(const CObject& node, const CString& name, CAudioParamCollector& params)
{
    for (std::size_t i = 0; i < node.getChildCount(); ++i) {
        const CObject& child = *node.getChild(i);
        if (const auto* remap = dynamic_cast<const CAudioParamRemapDef*>(&child)) {
            params.addRemap(name + "." + remap->getOrigName(), remapTarget(name, remap->getNewName()));
        } else {
            enterRemaps(child, childName(child, name), params);
        }
    }
}

void CAudioProcessParams::makeGlobals(const CObject& node, const CString& name, CAudioParamCollector& params)
{
    for (std::size_t i = 0; i < node.getChildCount(); ++i) {
        const CObject& child = *node.getChild(i);
        const CString fullName = childName(child, name);
        const auto* param = dynamic_cast<const CAudioParamDef*>(&child);
        if (!param) {
            makeGlobals(child, fullName, params);
        } else if (param->getInfo().isGlobal && !params.isRemapped(fullName)) {
            params.getParam(fullName).setInfo(param->shareInfo(), param->getFullName());
        }
    }
}

CError CAudioProcessParams::startFilters(const CObject& node, const CString& name,
                                         CAudioParamCollector& params)
{
    for (std::size_t i = 0; i < node.getChildCount(); ++i) {
        const CObject& child = *node.getChild(i);
        if (const auto* filterDef = dynamic_cast<const CAudioParamFilterDef*>(&child)) {
            filters_.emplace_back(filterDef->createFilter());
            QEL_TRY(filters_.back()->init(params, name, filterDef->getSourceNames(),
                                          filterDef->getDestinationNames()),
                    child.getFullName());
        } else {
            QEL_TRY(startFilters(child, childName(child, name), params), child.getFullName());
        }
    }
    return {};
}

} // namespace qel
