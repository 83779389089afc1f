// Preset compiler: XML to banks, lists and presets, and back.
#include "PresetCompiler/CPresetCompiler.h"
#include "PresetCompiler/PresetDecompiler.h"
#include "Streams/CMemoryReader.h"
#include "Streams/ResourceMap.h"
#include "TreeCompiler/ToolError.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace {

using namespace qel;
using namespace qel::tools;

// The tree of the plug-in that this tool was built with.
CTreeNode builtInTree()
{
    registerResourceDirectory(drumfellResourceDirectory);
    const auto bytes = findResource("SharedData.xml");
    if (!bytes) {
        throw CToolError("no tree is built in: give --tree");
    }
    CMemoryReader reader(*bytes);
    CByteBuffer payload;
    if (const CError error = reader.readCompressedData(payload, kCompiledTreeId)) {
        throw CToolError(error.text());
    }
    return decodeTree(payload.bytes());
}

int compile(CPresetInstance& instance, const std::string& input, const std::string& output)
{
    CPresetCompiler compiler(instance);
    if (!compiler.compile(input)) {
        for (const CDiagnostic& diagnostic : compiler.diagnostics()) {
            std::cerr << diagnostic.text() << '\n';
        }
        return 1;
    }
    if (!output.empty()) {
        writePresetFile(compiler.presets(), output);
    }
    return 0;
}

void decompile(CPresetInstance& instance, const std::string& input, const std::string& output)
{
    const std::string text = decompilePresets(readPresetFile(input), instance);
    if (output.empty()) {
        std::cout << text;
        return;
    }
    std::ofstream file(output, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw CToolError("cannot write '" + output + "'");
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Compiles presets from XML, and turns compiled ones back");
    std::string input;
    std::string output;
    std::string tree;
    bool isDecompile = false;
    bool isCheck = false;
    app.add_option("IN", input, "XML file, or with --decompile a bank, list or preset")->required();
    auto* outputOption =
        app.add_option("-o,--output", output, "File to write; --decompile prints without it");
    auto* decompileFlag = app.add_flag("--decompile", isDecompile, "Turn a compiled file back into XML");
    app.add_flag("--check", isCheck, "Only judge the XML file")
        ->excludes(decompileFlag)
        ->excludes(outputOption);
    app.add_option("--tree", tree, "Compiled tree of the plug-in, in place of the one built in");
    CLI11_PARSE(app, argc, argv);

    if (output.empty() && !isCheck && !isDecompile) {
        std::cerr << "drumfell-presetc: nothing to do: give -o or --check\n";
        return 1;
    }
    try {
        CPresetInstance instance(tree.empty() ? builtInTree() : readCompiledTree(tree));
        if (!isDecompile) {
            return compile(instance, input, output);
        }
        decompile(instance, input, output);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
