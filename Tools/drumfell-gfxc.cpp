// Graphics compiler: sources of image sets, fonts, brushes and palettes to their files, and a look at those.
#include "GraphicsCompiler/ContactSheet.h"
#include "GraphicsCompiler/GraphicsPrinter.h"
#include "GraphicsCompiler/GraphicsSource.h"
#include "TreeCompiler/TextFiles.h"
#include "TreeCompiler/ToolError.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <sstream>

namespace {

using namespace qel::tools;

struct Options
{
    std::string input;
    std::string output;
    std::string depfile;
    std::string sheet;
    std::string palette;
    bool decompile = false;
    bool check = false;
    CSheetOptions look;
};

// What a file holds, or what a source makes. Throws CToolError with all faults, one a line.
CGraphicsFile load(const Options& options)
{
    if (isGraphicsPath(options.input)) {
        return readGraphicsFile(options.input);
    }
    CGraphicsSource source = compileGraphics(options.input);
    if (!source.diagnostics.empty()) {
        std::string faults;
        for (const CDiagnostic& diagnostic : source.diagnostics) {
            faults += (faults.empty() ? "" : "\n") + diagnostic.text();
        }
        throw CToolError(faults);
    }
    if (!options.depfile.empty()) {
        writeTextFile(options.depfile, dependencyRule(options.output, source.files));
    }
    return std::move(source.result);
}

CPaletteFile loadPalette(const std::string& path)
{
    CGraphicsFile file = readGraphicsFile(path);
    if (auto* palette = std::get_if<CPaletteFile>(&file)) {
        return std::move(*palette);
    }
    throw CToolError(path + ": a palette expected");
}

void drawSheet(const CGraphicsFile& file, const Options& options)
{
    CPaletteFile palette;
    CSheetOptions look = options.look;
    if (!options.palette.empty()) {
        palette = loadPalette(options.palette);
        look.palette = &palette;
    }
    if (look.colours.empty()) {
        look.colours = usualColours(options.input);
    }
    drawContactSheet(file, look, options.sheet);
}

void run(const Options& options)
{
    const CGraphicsFile file = load(options);
    if (!options.sheet.empty()) {
        drawSheet(file, options);
    }
    if (options.decompile) {
        std::ostringstream text;
        printGraphics(file, GraphicsDetail::kAll, text);
        if (options.output.empty()) {
            std::cout << text.str();
        } else {
            writeTextFile(options.output, text.str());
        }
    } else if (!options.output.empty()) {
        writeGraphicsFile(file, options.output);
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Compiles graphics from their sources, checks, prints and shows them");
    Options options;
    app.add_option("IN", options.input, "Source (.xml) or compiled file (.is, .fnt, .bs, .pal)")->required();
    auto* output = app.add_option("-o,--output", options.output, "File to write");
    app.add_flag("--decompile", options.decompile, "Write what the file holds as text, to -o or the screen");
    app.add_flag("--check", options.check, "Only judge the file");
    app.add_option("--depfile", options.depfile, "List of the files read, as a Make rule")->needs(output);
    auto* sheet = app.add_option("--sheet", options.sheet, "Draw all that the file holds into this PNG");
    app.add_option("--palette", options.palette, "Compiled palette that paints the sheet")->needs(sheet);
    app.add_option("--colours", options.look.colours, "Its colours for the slots from 0 on, by commas")
        ->delimiter(',')
        ->needs(sheet);
    app.add_option("--state", options.look.state, "State of the colours")
        ->check(CLI::IsMember({"Hover", "Active", "ActiveHover"}))
        ->needs(sheet);
    app.add_option("--scale", options.look.scale, "Scale to show")->capture_default_str()->needs(sheet);
    app.add_option("--zoom", options.look.zoom, "Pixels of the sheet for one of the graphics")
        ->capture_default_str()
        ->check(CLI::Range(1, 16))
        ->needs(sheet);
    CLI11_PARSE(app, argc, argv);

    if (options.output.empty() && options.sheet.empty() && !options.decompile && !options.check) {
        std::cerr << "drumfell-gfxc: nothing to do: give -o, --sheet, --decompile or --check\n";
        return 1;
    }
    try {
        run(options);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
