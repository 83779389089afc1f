// An instance to ask what its parameters mean.
#include "PresetCompiler/CPresetInstance.h"

#include "CAudioParamDef.h"

#include <algorithm>

namespace qel::tools {

CPresetInstance::CPresetInstance(const CTreeNode& sharedTree) : host_(sharedTree, {})
{
    const CObject& plugin = host_.instance();
    for (std::size_t i = 0; i < plugin.getChildCount(); ++i) {
        if (auto* registry = dynamic_cast<CAudioParamRegistry*>(plugin.getChild(i))) {
            registries_.push_back(registry);
        }
    }
}

std::string CPresetInstance::nameOf(const CAudioParamRegistry& registry)
{
    const std::string fullName = registry.getRegistryName().toUtf8();
    return fullName.substr(fullName.rfind('.') + 1);
}

CAudioParamRegistry* CPresetInstance::findRegistry(const std::string& name)
{
    const auto found =
        std::ranges::find_if(registries_, [&](const auto* each) { return nameOf(*each) == name; });
    return found == registries_.end() ? nullptr : *found;
}

CAudioParamRegistry* CPresetInstance::findRegistryOf(const CString& presetId)
{
    const auto found =
        std::ranges::find_if(registries_, [&](const auto* each) { return each->getId() == presetId; });
    return found == registries_.end() ? nullptr : *found;
}

CAudioParam* CPresetInstance::findParam(const CAudioParamRegistry& registry, const CString& key)
{
    CAudioParam& param = host_.params().getParam(registry.getHierarchy() + "." + key);
    return param.hasInfo() ? &param : nullptr;
}

bool CPresetInstance::isDefinition(const CString& path)
{
    const CObject* shared = CObject::sharedObject();
    return shared && dynamic_cast<const CAudioParamDef*>(shared->findObject(path));
}

} // namespace qel::tools
