// Inspector: prints any compiled file as readable text, the live graph that a compiled tree defines, the
// layout of a tree of views, or the views of the plug-in's own windows.
#include "CKernelContext.h"
#include "GraphHost/CGraphHost.h"
#include "GraphHost/CGraphPrinter.h"
#include "GraphicsCompiler/GraphicsPrinter.h"
#include "Inspect/FileKinds.h"
#include "Layout/PrintLayout.h"
#include "Streams/CFileReader.h"
#include "Trace.h"
#include "TreeCompiler/ToolError.h"
#include "Views/CInterfaceHost.h"
#include "Views/PrintViews.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace {

using namespace qel;
using namespace qel::tools;

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

std::string idText(std::uint32_t id)
{
    std::string text;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        text += static_cast<char>(id >> shift);
    }
    return text;
}

void inspect(const std::string& path)
{
    if (isGraphicsPath(path)) { // these have no chunk ID
        printGraphics(readGraphicsFile(path), GraphicsDetail::kFacts, std::cout);
        return;
    }
    CFileReader reader;
    std::uint32_t id = 0;
    require(reader.open(CString::fromUtf8(path), 0));
    require(reader.readU32(id));
    const auto kinds = fileKinds();
    const auto kind = std::ranges::find(kinds, idText(id), &CFileKind::id);
    if (kind == kinds.end()) {
        throw CToolError(path + ": unknown chunk ID " + printable(idText(id)));
    }
    CByteBuffer payload;
    require(reader.setPosition(0));
    require(reader.readCompressedData(payload, id));
    std::cout << kind->id << " (" << kind->title << "), " << payload.size() << " bytes unpacked\n";
    kind->print(payload.bytes(), std::cout);
}

struct GraphOptions
{
    bool isWanted = false;
    bool asDot = false;
    bool withCalls = false;
    CGraphHost::Options host;
    int channels = 2;
    int block = 64;
    std::vector<std::string> values; // name=value
};

void setValues(CGraphHost& host, const std::vector<std::string>& values)
{
    for (const std::string& assignment : values) {
        const std::size_t equals = assignment.find('=');
        const std::string name = assignment.substr(0, equals);
        if (equals == std::string::npos || !host.set(name, std::stod(assignment.substr(equals + 1)))) {
            throw CToolError("no parameter to set: " + assignment);
        }
    }
}

// The graph is taken down after a block of silence has run through it, when formats and links are settled.
void inspectGraph(const std::string& path, const GraphOptions& options)
{
    CGraphHost host(readCompiledTree(path), options.host);
    setValues(host, options.values);
    const CChannels silence(static_cast<std::size_t>(options.channels),
                            std::vector<double>(static_cast<std::size_t>(options.block)));
    host.run(silence, {options.block});
    CKernelRecording recording;
    host.kernels().setObserver(&recording);
    host.run(silence, {options.block});
    host.kernels().setObserver(nullptr);

    CGraphPrinter printer;
    host.root().visit(printer);
    if (options.asDot) {
        printer.printDot(std::cout);
    } else {
        printer.printText(std::cout);
    }
    if (options.withCalls) {
        printCalls(recording, std::cout);
    }
}

struct LayoutOptions
{
    bool isWanted = false;
    bool asJson = false;
    double scale = 1.0;
    std::string png;
};

void inspectLayout(const std::string& path, const LayoutOptions& options)
{
    setTraceHook([](const CString& line) { std::cerr << line.toUtf8() << '\n'; });
    const std::vector<CLayoutTree::View> views = CLayoutTree(compileLayout(path), options.scale).views();
    if (options.asJson) {
        printLayoutJson(views, std::cout);
    } else {
        printLayoutText(views, std::cout);
    }
    if (!options.png.empty()) {
        drawLayout(views, options.png);
    }
}

struct ViewsOptions
{
    bool isWanted = false;
    CInterfaceHost::Options host;
    std::string window;
    std::vector<std::string> clicks;
    double soundSec = 0.0;
    double levelDb = -12.0;
    std::string hover;
};

void inspectViews(const ViewsOptions& options, const std::vector<std::string>& values, bool asJson,
                  const std::string& png)
{
    setTraceHook([](const CString& line) { std::cerr << line.toUtf8() << '\n'; });
    CInterfaceHost host(options.host);
    for (const std::string& assignment : values) {
        const std::size_t equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw CToolError("no value to set: " + assignment);
        }
        host.set(assignment.substr(0, equals), assignment.substr(equals + 1));
    }
    if (!options.window.empty()) {
        host.openWindow(options.window);
    }
    for (const std::string& path : options.clicks) {
        host.click(path);
    }
    if (!options.hover.empty()) {
        host.hover(options.hover);
    }
    if (options.soundSec > 0.0) {
        host.play(options.soundSec, options.levelDb);
    }
    CWindow& window = host.topWindow();
    const std::vector<CViewRecord> views = listViews(window);
    if (asJson) {
        printViewsJson(views, std::cout);
    } else if (png.empty()) {
        printViewsText(views, std::cout);
    }
    if (!png.empty()) {
        writePicture(window, png);
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Prints a compiled file as readable text, the graph that a compiled tree defines, the "
                 "layout of a tree of views, or the views of the plug-in's own windows");
    std::string path;
    GraphOptions graph;
    CLI::Option* isFile = app.add_option(
        "FILE", path, "Compiled tree, stored string, preset, bank, preset list or graphics; XML of views");
    CLI::Option* isGraph =
        app.add_flag("--graph", graph.isWanted, "Build the tree's signal graph and print it");
    app.add_flag("--dot", graph.asDot, "Print the graph for Graphviz")->needs(isGraph);
    app.add_flag("--calls", graph.withCalls, "Print every kernel call of one block")->needs(isGraph);
    app.add_option("--definition", graph.host.definition, "Path of the process definition")
        ->capture_default_str()
        ->needs(isGraph);
    app.add_option("--process", graph.host.processName, "Full name of the process")
        ->capture_default_str()
        ->needs(isGraph);
    app.add_option("--channels", graph.channels, "Channels fed")
        ->capture_default_str()
        ->needs(isGraph)
        ->check(CLI::Range(1, 16));
    app.add_option("--block", graph.block, "Samples in a block")
        ->capture_default_str()
        ->needs(isGraph)
        ->check(CLI::Range(1, 65536));
    app.add_option("--rate", graph.host.rateHz, "Sample rate in Hz")->capture_default_str()->needs(isGraph);
    app.add_option("--set", graph.values,
                   "Parameter of the process, NAME=VALUE in real units; with --views a "
                   "parameter as a user types it, or an attribute PATH:NAME=VALUE");
    LayoutOptions layout;
    CLI::Option* isLayout =
        app.add_flag("--layout", layout.isWanted, "Lay out a tree of views and print their rectangles")
            ->excludes(isGraph);
    app.add_option("--scale", layout.scale, "Interface scale")
        ->capture_default_str()
        ->check(CLI::Range(0.25, 8.0) & CLI::Validator(
                                            [](const std::string& text) {
                                                // A range lets NaN through: it is neither below nor above.
                                                return std::isnan(std::stod(text)) ? "not a number" : "";
                                            },
                                            ""));
    app.add_flag("--json", layout.asJson, "Print JSON");
    app.add_option("--png", layout.png, "Draw the outlines of the views, or what a user sees");
    ViewsOptions views;
    CLI::Option* isViews =
        app.add_flag("--views", views.isWanted, "Open the plug-in's interface and print its views")
            ->excludes(isGraph)
            ->excludes(isLayout)
            ->excludes(isFile);
    app.add_option("--window", views.window, "Open the window of this template")->needs(isViews);
    app.add_option("--palette", views.host.palette, "Name of a palette")
        ->capture_default_str()
        ->needs(isViews);
    app.add_option("--click", views.clicks, "Press a view, by its path")->needs(isViews);
    app.add_option("--hover", views.hover, "Put the pointer on a view, by its path")->needs(isViews);
    app.add_option("--sound", views.soundSec, "Seconds of sound at the inputs")->needs(isViews);
    app.add_option("--level", views.levelDb, "Level of the sound in dB")
        ->capture_default_str()
        ->needs(isViews);
    CLI11_PARSE(app, argc, argv);
    try {
        if (views.isWanted) {
            views.host.scale = layout.scale;
            inspectViews(views, graph.values, layout.asJson, layout.png);
        } else if (!*isFile) {
            throw CToolError("nothing to inspect: give a file, or --views");
        } else if (graph.isWanted) {
            inspectGraph(path, graph);
        } else if (layout.isWanted) {
            inspectLayout(path, layout);
        } else {
            inspect(path);
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
