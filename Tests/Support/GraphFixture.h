// A graph built from XML, for tests and benchmarks.
#pragma once

#include "GraphHost/CGraphHost.h"
#include "TreeCompiler/CTreeCompiler.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace qel::test {

using Channels = tools::CChannels;

inline void requireOk(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

// Compiles the text of a <tree>.
inline tools::CTreeNode compileXml(const std::string& xml)
{
    const auto path = std::filesystem::temp_directory_path() /
                      ("drumfell-" + std::to_string(std::hash<std::string>()(xml)) + ".xml");
    std::ofstream(path) << xml;
    tools::CTreeCompiler compiler;
    const bool isGood = compiler.compile(path);
    std::filesystem::remove(path);
    if (!isGood) {
        throw std::runtime_error(compiler.diagnostics().front().message);
    }
    return compiler.root();
}

// Runs the definition "main" of a piece of XML, behind a few converters, as the process "plugin.main".
class GraphFixture : public tools::CGraphHost
{
public:
    explicit GraphFixture(const std::string& definition)
        : CGraphHost(compileXml(R"(<tree><core:object name="audio"><core:object name="paramcvt">
              <audio:cvt-gain name="gain"/><audio:cvt-real name="real" decimals="2"/>
              <audio:cvt-percent name="percent"/><audio:cvt-enum name="enum"/>
            </core:object></core:object>)" +
                                definition + "</tree>"),
                     Options{"main", "plugin.main", 48000.0})
    {}
};

} // namespace qel::test
