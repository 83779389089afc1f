// Tree compiler: XML to compiled trees and back.
#include "TreeCompiler/CTreeCompiler.h"
#include "TreeCompiler/TextFiles.h"
#include "TreeCompiler/TreeDecompiler.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

using namespace qel::tools;

int compile(const std::string& input, const std::string& output, const std::string& depfile)
{
    CTreeCompiler compiler;
    if (!compiler.compile(input)) {
        for (const CDiagnostic& diagnostic : compiler.diagnostics()) {
            std::cerr << diagnostic.text() << '\n';
        }
        return 1;
    }
    if (!output.empty()) {
        writeCompiledTree(compiler.root(), output);
    }
    if (!depfile.empty()) {
        writeTextFile(depfile, dependencyRule(output, compiler.files()));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Compiles object trees from XML, and turns compiled ones back");
    std::string input;
    std::string output;
    std::string depfile;
    bool decompile = false;
    bool check = false;
    app.add_option("IN", input, "XML file, or with --decompile a compiled tree")->required();
    auto* outputOption = app.add_option("-o,--output", output, "File to write");
    auto* decompileFlag = app.add_flag("--decompile", decompile, "Turn a compiled tree back into XML");
    app.add_flag("--check", check, "Only judge the XML file")
        ->excludes(decompileFlag)
        ->excludes(outputOption);
    app.add_option("--depfile", depfile, "List of the files read, as a Make rule")->needs(outputOption);
    CLI11_PARSE(app, argc, argv);

    if (output.empty() && !check) {
        std::cerr << "drumfell-treec: nothing to do: give -o or --check\n";
        return 1;
    }
    try {
        if (!decompile) {
            return compile(input, output, depfile);
        }
        writeTextFile(output, decompileTree(readCompiledTree(input)));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
