// Inspector: prints any compiled file as readable text, the live graph that a compiled tree defines, or the
// layout of a tree of views.
#include "CKernelContext.h"
#include "GraphHost/CGraphHost.h"
#include "GraphHost/CGraphPrinter.h"
#include "GraphicsCompiler/GraphicsPrinter.h"
#include "Inspect/FileKinds.h"
#include "Layout/PrintLayout.h"
#include "Streams/CFileReader.h"
#include "Trace.h"
#include "TreeCompiler/ToolError.h"

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

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Prints a compiled file as readable text, the graph that a compiled tree defines, or "
                 "the layout of a tree of views");
    std::string path;
    GraphOptions graph;
    app.add_option("FILE", path,
                   "Compiled tree, stored string, preset, bank, preset list or graphics; XML of views")
        ->required();
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
    app.add_option("--set", graph.values, "Parameter of the process, NAME=VALUE in real units")
        ->needs(isGraph);
    LayoutOptions layout;
    CLI::Option* isLayout =
        app.add_flag("--layout", layout.isWanted, "Lay out a tree of views and print their rectangles")
            ->excludes(isGraph);
    app.add_option("--scale", layout.scale, "Interface scale")
        ->capture_default_str()
        ->needs(isLayout)
        ->check(CLI::Range(0.25, 8.0) & CLI::Validator(
                                            [](const std::string& text) {
                                                // A range lets NaN through: it is neither below nor above.
                                                return std::isnan(std::stod(text)) ? "not a number" : "";
                                            },
                                            ""));
    app.add_flag("--json", layout.asJson, "Print JSON")->needs(isLayout);
    app.add_option("--png", layout.png, "Draw the outlines of the views")->needs(isLayout);
    CLI11_PARSE(app, argc, argv);
    try {
        if (graph.isWanted) {
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
