// A graph built from XML, for tests and benchmarks.
#pragma once

#include "CompileXml.h"
#include "GraphHost/CGraphHost.h"

#include <stdexcept>

namespace qel::test {

using Channels = tools::CChannels;

inline void requireOk(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

// Runs the definition "main" of a piece of XML, behind a few converters, as the process "plugin.main".
class GraphRig : public tools::CGraphHost
{
public:
    explicit GraphRig(const std::string& definition)
        : CGraphHost(compileXml(R"(<tree><core:object name="audio"><core:object name="paramcvt">
              <audio:cvt-gain name="gain"/><audio:cvt-real name="real" decimals="2"/>
              <audio:cvt-percent name="percent"/><audio:cvt-enum name="enum"/>
            </core:object></core:object>)" +
                                definition + "</tree>"),
                     Options{"main", "plugin.main", 48000.0})
    {}
};

} // namespace qel::test
