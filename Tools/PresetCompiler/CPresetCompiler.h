// From authored XML to presets.
#pragma once

#include "PresetCompiler/CPresetInstance.h"
#include "PresetCompiler/PresetFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace qel::tools {

// The XML form:
//
//   <bank registry="param-registry" name="Factory ROM">      or <list ...>, which may do without a name
//       <preset name="Warm">                                  as root, with the registry, a file of one
//       preset
//           <param name="modDrumfell.sat-drive" value="+12 dB"/>
//           <inert name="gone" definition="audio.modMain.gone" value="1"/>
//
// The names of presets are without the registry's id, those of parameters relative to its hierarchy. Values
// are what CValueText reads; without `value` there are none, not even in group 0. An <inert> entry is for a
// key that no parameter has any more: its definition leads nowhere, its values are real numbers, or strings
// with type="string", in entries of `elements` (1).
//
// What the plug-in would skip, clamp or read as something else is refused. All faults are collected; a
// compiler object serves one compile().
class CPresetCompiler
{
public:
    // The instance must outlive the compiler.
    explicit CPresetCompiler(CPresetInstance& instance) : instance_(instance) {}

    // False if there are diagnostics.
    bool compile(const std::filesystem::path& file);

    const CPresetFile& presets() const { return result_; }
    const std::vector<CDiagnostic>& diagnostics() const { return diagnostics_; }

private:
    using Names = std::vector<std::string_view>;

    pugi::xml_node rootElement();
    void compileRoot(pugi::xml_node root);
    void compilePreset(pugi::xml_node element, const Names& attributes);
    void compileParam(pugi::xml_node element, CAudioPreset& preset);
    void compileInert(pugi::xml_node element, CAudioPreset& preset);
    void setValues(pugi::xml_node element, CAudioPreset& preset, const CString& definition,
                   const CAudioParamStorage& values);

    void checkAttributes(pugi::xml_node element, const Names& allowed);
    // The value of an attribute that must be there; reports a missing or empty one.
    std::optional<std::string> required(pugi::xml_node element, const char* attribute);

    CPresetInstance& instance_;
    CPresetFile result_;
    std::vector<CDiagnostic> diagnostics_;
    std::optional<CXmlSource> source_;
    const CAudioParamRegistry* registry_ = nullptr;
};

} // namespace qel::tools
