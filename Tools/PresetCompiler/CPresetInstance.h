// An instance to ask what its parameters mean.
#pragma once

#include "CAudioParam.h"
#include "CAudioParamRegistry.h"
#include "GraphHost/CGraphHost.h"

#include <string>
#include <vector>

namespace qel::tools {

// Builds the plug-in from a shared tree, so that presets are read and written by the very converters,
// declarations and registries that will use them. One at a time in a process.
class CPresetInstance
{
public:
    explicit CPresetInstance(const CTreeNode& sharedTree);

    // By the last part of the object's name ("param-registry"); null if there is none.
    CAudioParamRegistry* findRegistry(const std::string& name);
    // By what stands before the colon of a preset's name.
    CAudioParamRegistry* findRegistryOf(const CString& presetId);
    // The last part of the registry's name.
    static std::string nameOf(const CAudioParamRegistry& registry);

    // The parameter behind a key of the registry's presets; null if no definition of the tree makes one.
    CAudioParam* findParam(const CAudioParamRegistry& registry, const CString& key);
    // True if the path leads to a declaration in the shared tree.
    static bool isDefinition(const CString& path);

private:
    CGraphHost host_;
    std::vector<CAudioParamRegistry*> registries_;
};

} // namespace qel::tools
