// Prints presets, banks and lists.
#include "Inspect/FileKinds.h"

#include "CAudioPresetBank.h"
#include "Inspect/PresetRecord.h"
#include "Streams/CMemoryReader.h"
#include "TreeCompiler/ToolError.h"

#include <charconv>
#include <ostream>

namespace qel::tools {

namespace {

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

// The shortest text that reads back as the same number.
std::string numberText(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

// Groups between braces; what is not there is seen to be not there.
void printValues(const CAudioParamStorage& values, std::ostream& out)
{
    for (std::int32_t group = 0; group < values.getGroupCount(); ++group) {
        out << " {";
        const char* separator = "";
        for (const double value : values.getValues(group)) {
            out << separator
                << (values.isString() ? printable(values.getPool().getString(value).toUtf8())
                                      : numberText(value));
            separator = ", ";
        }
        out << '}';
    }
}

void printEntries(const CAudioPreset& preset, const char* indent, std::ostream& out)
{
    for (const auto& [key, block] : preset.getEntries()) {
        const CPresetRecord record = readPresetRecord(block);
        out << indent << key.toUtf8() << " =";
        printValues(record.values, out);
        if (record.values.getEsize() > 1) {
            out << " in entries of " << record.values.getEsize();
        }
        out << ", declared at " << printable(record.definition.toUtf8()) << '\n';
    }
}

void printAll(const CAudioPresetBank& bank, std::ostream& out)
{
    out << "name " << printable(bank.getName().toUtf8()) << ", " << bank.getCount() << " presets\n";
    for (std::int32_t i = 0; i < bank.getCount(); ++i) {
        const CAudioPreset& preset = bank.get(i);
        out << i << ' ' << printable(preset.getName().toUtf8()) << ", " << preset.getEntries().size()
            << " entries\n";
        printEntries(preset, "    ", out);
    }
}

} // namespace

void printPreset(std::span<const std::uint8_t> payload, std::ostream& out)
{
    CMemoryReader reader(payload);
    CAudioPreset preset;
    require(preset.load(reader));
    out << "name " << printable(preset.getName().toUtf8()) << ", " << preset.getEntries().size()
        << " entries\n";
    printEntries(preset, "", out);
}

void printBank(std::span<const std::uint8_t> payload, std::ostream& out)
{
    CMemoryReader reader(payload);
    CAudioPresetBank bank;
    require(bank.load(reader));
    printAll(bank, out);
}

void printList(std::span<const std::uint8_t> payload, std::ostream& out)
{
    CMemoryReader reader(payload);
    CAudioPresetBank list;
    require(list.loadList(reader));
    printAll(list, out);
}

} // namespace qel::tools
