// Pieces of trees and signals for the tests of single processes.
#pragma once

#include "CAudioParam.h"
#include "CAudioProcess.h"
#include "GraphRig.h"

#include <random>

namespace qel::test {

inline Channels noise(std::size_t channels, std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> level(-1.0, 1.0);
    Channels result(channels, std::vector<double>(count));
    for (auto& channel : result) {
        for (double& sample : channel) {
            sample = level(random);
        }
    }
    return result;
}

inline std::string globalParam(const std::string& name, const std::string& defaults)
{
    return "<audio:param name=\"" + name + "\" is-global=\"true\" converter=\"real\" min-values=\"-100\" " +
           "max-values=\"100\" def-values=\"" + defaults + "\"/>";
}

inline std::string slot(const std::string& name, int index)
{
    return "<audio:param-alloc param-name=\"" + name + "\" index=\"" + std::to_string(index) + "\"/>";
}

// A slot with a global parameter of the same name behind it.
inline std::string globalSlot(const std::string& name, int index, const std::string& defaults)
{
    return slot(name, index) + globalParam(name, defaults);
}

// Writes a list of elements, `timeSec` after the start of the next processing call.
inline void setList(tools::CGraphHost& graph, const std::string& name, const std::vector<double>& values,
                    double timeSec = 0.0)
{
    CAudioParam& param = graph.params().resolveParam(graph.root().fullName() + "." + CString(name));
    CAudioParamContext context;
    CAudioParamChange change;
    change.count = static_cast<std::int32_t>(values.size());
    change.time = timeSec;
    change.values = values.data();
    if (!param.hasInfo() || !param.change(change, context)) {
        throw std::runtime_error("cannot set " + name);
    }
}

template <class Process>
Process& child(tools::CGraphHost& graph, const char* name)
{
    return dynamic_cast<Process&>(*dynamic_cast<CAudioProcess&>(graph.root()).findProcess(name));
}

// Sees what the root process puts out, with its formats.
class OutputProbe
{
public:
    explicit OutputProbe(tools::CGraphHost& graph) : link_(graph.graph(), graph.root().output(0))
    {
        link_.connect();
    }
    ~OutputProbe() { link_.disconnect(); }
    CAudioLink& link() { return link_; }
    const CAudioStreamFormat* format(int channel) const
    {
        const CAudioChunk* head = link_.head(channel);
        return head ? head->format : nullptr;
    }

private:
    CAudioLink link_;
};

// What building the tree reports, or "built".
template <class Fixture>
std::string buildMessage(const std::string& definition)
{
    try {
        Fixture graph(definition);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "built";
}

} // namespace qel::test
