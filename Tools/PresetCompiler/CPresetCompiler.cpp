// From authored XML to presets.
#include "PresetCompiler/CPresetCompiler.h"

#include "PresetCompiler/CValueText.h"
#include "TreeCompiler/ToolError.h"

#include <algorithm>

namespace qel::tools {

namespace {

constexpr std::int32_t kMaxElements = 64;

bool isElement(pugi::xml_node node, std::string_view name)
{
    return node.type() == pugi::node_element && node.name() == name;
}

CString text(const std::string& utf8)
{
    return CString::fromUtf8(utf8);
}

} // namespace

bool CPresetCompiler::compile(const std::filesystem::path& file)
{
    try {
        source_.emplace(file, file.string(), diagnostics_);
        if (const pugi::xml_node root = rootElement()) {
            compileRoot(root);
        }
    } catch (const CToolError& error) {
        diagnostics_.push_back({file.string(), 0, 0, error.what()});
    }
    return diagnostics_.empty();
}

pugi::xml_node CPresetCompiler::rootElement()
{
    if (!source_->isGood()) {
        return {};
    }
    pugi::xml_node root;
    for (const pugi::xml_node node : source_->document()) {
        if (node.type() != pugi::node_element) {
            source_->report(node, "text outside the root element");
        } else if (root) {
            source_->report(node, "a second root element");
        } else {
            root = node;
        }
    }
    if (!root) {
        diagnostics_.push_back({source_->shownName(), 1, 1, "no root element"});
    }
    return root;
}

void CPresetCompiler::compileRoot(pugi::xml_node root)
{
    const auto registryName = required(root, "registry");
    if (!registryName) {
        return;
    }
    registry_ = instance_.findRegistry(*registryName);
    if (!registry_) {
        source_->report(root.attribute("registry"), "no registry '" + *registryName + "' in the plug-in");
        return;
    }
    if (isElement(root, "preset")) {
        result_.kind = CPresetFile::Kind::kPreset;
        compilePreset(root, {"registry", "name"});
        return;
    }
    if (!isElement(root, "bank") && !isElement(root, "list")) {
        source_->report(root, "the root element must be <bank>, <list> or <preset>, not <" +
                                  std::string(root.name()) + ">");
        return;
    }
    result_.kind = isElement(root, "bank") ? CPresetFile::Kind::kBank : CPresetFile::Kind::kList;
    checkAttributes(root, {"registry", "name"});
    result_.presets.setName(text(root.attribute("name").value()));
    for (const pugi::xml_node child : root.children()) {
        if (isElement(child, "preset")) {
            compilePreset(child, {"name"});
        } else {
            source_->report(child, "only <preset> elements stand here");
        }
    }
}

void CPresetCompiler::compilePreset(pugi::xml_node element, const Names& attributes)
{
    checkAttributes(element, attributes);
    const std::string title = required(element, "name").value_or("");
    CAudioPreset preset(CAudioPreset::makeName(registry_->getId(), text(title)));
    for (const pugi::xml_node child : element.children()) {
        if (isElement(child, "param")) {
            compileParam(child, preset);
        } else if (isElement(child, "inert")) {
            compileInert(child, preset);
        } else {
            source_->report(child, "only <param> and <inert> elements stand here");
        }
    }
    result_.presets.add(std::move(preset));
}

void CPresetCompiler::compileParam(pugi::xml_node element, CAudioPreset& preset)
{
    checkAttributes(element, {"name", "value"});
    const auto key = required(element, "name");
    if (!key) {
        return;
    }
    const pugi::xml_attribute name = element.attribute("name");
    const CAudioParam* param = instance_.findParam(*registry_, text(*key));
    if (!param) {
        source_->report(name, "no parameter '" + *key + "'; a key that is kept without one is an <inert>");
        return;
    }
    const CAudioParamInfo& info = param->getInfo();
    if (!info.isStorable && !info.isPersistent) {
        source_->report(name, "the parameter '" + *key + "' is not kept in presets");
        return;
    }
    const pugi::xml_attribute value = element.attribute("value");
    try {
        CAudioParamStorage values;
        values.format(info.esize, info.dtype);
        if (value) {
            values = CValueText(info).parse(value.value());
        }
        if (info.isSingleGroup && values.getGroupCount() > 1) {
            throw CValueError("the parameter '" + *key + "' has one group for the whole instance");
        }
        setValues(element, preset, param->getDefPath(), values);
    } catch (const CValueError& error) {
        source_->report(value, error.what());
    }
}

void CPresetCompiler::compileInert(pugi::xml_node element, CAudioPreset& preset)
{
    checkAttributes(element, {"name", "value", "definition", "type", "elements"});
    const auto key = required(element, "name");
    const auto definition = required(element, "definition");
    if (!key || !definition) {
        return;
    }
    if (instance_.findParam(*registry_, text(*key))) {
        source_->report(element.attribute("name"), "there is a parameter '" + *key + "': it is no inert key");
    }
    if (CPresetInstance::isDefinition(text(*definition))) {
        source_->report(element.attribute("definition"),
                        "'" + *definition + "' declares a parameter, so the key would bring it to life");
    }
    const std::string_view type = element.attribute("type").value();
    if (!type.empty() && type != "string") {
        source_->report(element.attribute("type"), "the only type to be named is 'string'");
        return;
    }
    const int elements = element.attribute("elements").as_int(1);
    if (elements < 1 || elements > kMaxElements) {
        source_->report(element.attribute("elements"), "an entry has 1 to 64 elements");
        return;
    }
    const std::int32_t dtype = type.empty() ? CAudioParamStorage::kFloat : CAudioParamStorage::kString;
    const pugi::xml_attribute value = element.attribute("value");
    try {
        CAudioParamStorage values;
        values.format(elements, dtype);
        if (value) {
            values = CValueText(elements, dtype).parse(value.value());
        }
        setValues(element, preset, text(*definition), values);
    } catch (const CValueError& error) {
        source_->report(value, error.what());
    }
}

void CPresetCompiler::setValues(pugi::xml_node element, CAudioPreset& preset, const CString& definition,
                                const CAudioParamStorage& values)
{
    const CString key = text(element.attribute("name").value());
    if (preset.findEntry(key)) {
        source_->report(element.attribute("name"), "a second entry '" + key.toUtf8() + "'");
        return;
    }
    if (const CError error = preset.setValues(key, definition, values)) {
        source_->report(element, error.text());
    }
}

void CPresetCompiler::checkAttributes(pugi::xml_node element, const Names& allowed)
{
    Names seen;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view name = attribute.name();
        if (std::ranges::find(allowed, name) == allowed.end()) {
            source_->report(attribute, "<" + std::string(element.name()) + "> has no attribute '" +
                                           std::string(name) + "'");
        } else if (std::ranges::find(seen, name) != seen.end()) {
            source_->report(attribute, "a second attribute '" + std::string(name) + "'");
        }
        seen.push_back(name);
    }
}

std::optional<std::string> CPresetCompiler::required(pugi::xml_node element, const char* attribute)
{
    const pugi::xml_attribute found = element.attribute(attribute);
    if (*found.value() != '\0') {
        return found.value();
    }
    const std::string problem =
        "<" + std::string(element.name()) + "> needs the attribute '" + std::string(attribute) + "'";
    found ? source_->report(found, problem) : source_->report(element, problem);
    return std::nullopt;
}

} // namespace qel::tools
