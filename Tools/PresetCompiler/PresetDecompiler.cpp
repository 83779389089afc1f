// From presets back to XML.
#include "PresetCompiler/PresetDecompiler.h"

#include "Inspect/PresetRecord.h"
#include "PresetCompiler/CValueText.h"
#include "TreeCompiler/ToolError.h"

#include <pugixml.hpp>

#include <sstream>
#include <string_view>

namespace qel::tools {

namespace {

class CWriter
{
public:
    CWriter(const CPresetFile& file, CPresetInstance& instance) : file_(file), instance_(instance) {}

    std::string write()
    {
        pugi::xml_node declaration = document_.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "UTF-8";
        if (file_.kind == CPresetFile::Kind::kPreset) {
            writePreset(document_, file_.presets.get(0));
        } else {
            writeAll();
        }
        std::ostringstream out;
        document_.save(out, "    ", pugi::format_default, pugi::encoding_utf8);
        return tightened(out.str());
    }

private:
    // The writer leaves a blank before the end of an empty element, which our sources do not. Line breaks in
    // values are references, so nothing else ends like this.
    static std::string tightened(std::string text)
    {
        constexpr std::string_view kEnd = " />\n";
        for (std::size_t at = text.find(kEnd); at != text.npos; at = text.find(kEnd, at)) {
            text.erase(at, 1);
        }
        return text;
    }

    void writeAll()
    {
        const bool isBank = file_.kind == CPresetFile::Kind::kBank;
        if (file_.presets.isEmpty()) {
            throw CToolError("no presets, so that there is nothing to tell the registry by");
        }
        pugi::xml_node root = document_.append_child(isBank ? "bank" : "list");
        takeRegistry(root, file_.presets.get(0));
        if (!file_.presets.getName().isEmpty()) {
            root.append_attribute("name") = file_.presets.getName().toUtf8().c_str();
        }
        for (std::int32_t i = 0; i < file_.presets.getCount(); ++i) {
            writePreset(root, file_.presets.get(i));
        }
    }

    void takeRegistry(pugi::xml_node element, const CAudioPreset& preset)
    {
        registry_ = instance_.findRegistryOf(preset.getId());
        if (!registry_) {
            throw CToolError("preset '" + preset.getName().toUtf8() + "' belongs to no registry");
        }
        element.append_attribute("registry") = CPresetInstance::nameOf(*registry_).c_str();
    }

    void writePreset(pugi::xml_node parent, const CAudioPreset& preset)
    {
        pugi::xml_node element = parent.append_child("preset");
        if (!registry_) {
            takeRegistry(element, preset);
        }
        if (preset.getId() != registry_->getId()) {
            throw CToolError("preset '" + preset.getName().toUtf8() + "' belongs to another registry");
        }
        element.append_attribute("name") = preset.getTitle().toUtf8().c_str();
        for (const auto& [key, block] : preset.getEntries()) {
            writeEntry(element, key, readPresetRecord(block));
        }
    }

    void writeEntry(pugi::xml_node parent, const CString& key, const CPresetRecord& record)
    {
        const CAudioParam* param = instance_.findParam(*registry_, key);
        const CAudioParamStorage& values = record.values;
        const bool isKnown = param && param->getDefPath() == record.definition &&
                             param->getInfo().esize == values.getEsize() &&
                             param->getInfo().dtype == values.getDtype();
        pugi::xml_node element = parent.append_child(isKnown ? "param" : "inert");
        element.append_attribute("name") = key.toUtf8().c_str();
        if (!isKnown) {
            describe(element, record);
        }
        if (values.getGroupCount() > 0) {
            const CValueText text =
                isKnown ? CValueText(param->getInfo()) : CValueText(values.getEsize(), values.getDtype());
            element.append_attribute("value") = text.format(values).c_str();
        }
    }

    static void describe(pugi::xml_node element, const CPresetRecord& record)
    {
        element.append_attribute("definition") = record.definition.toUtf8().c_str();
        if (record.values.isString()) {
            element.append_attribute("type") = "string";
        }
        if (record.values.getEsize() > 1) {
            element.append_attribute("elements") = record.values.getEsize();
        }
    }

    const CPresetFile& file_;
    CPresetInstance& instance_;
    CAudioParamRegistry* registry_ = nullptr;
    pugi::xml_document document_;
};

} // namespace

std::string decompilePresets(const CPresetFile& file, CPresetInstance& instance)
{
    return CWriter(file, instance).write();
}

} // namespace qel::tools
