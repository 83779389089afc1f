// A graph of one process under test.
#pragma once

#include "CCreatorRegistry.h"
#include "GraphFixture.h"

#include <string>
#include <vector>

namespace qel::test {

// A parameter of the process: its slot is its place in the list, its value is what the module reads.
struct ModuleParameter
{
    std::string name;
    double value;
};

// Streams through one process of class Def. The process has a tag of its own here, so that the table of tags
// need not know the class. One at a time, like its host.
template <class Def>
class ModuleGraph
{
public:
    ModuleGraph(const std::vector<ModuleParameter>& parameters, const std::string& attributes = "")
        : graph_(definition(parameters, attributes))
    {}
    GraphFixture* operator->() { return &graph_; }
    void set(const std::string& parameter, double value) { graph_.set("m." + parameter, value); }

private:
    static std::string definition(const std::vector<ModuleParameter>& parameters,
                                  const std::string& attributes)
    {
        static constexpr CCreatorRow kRow{"test:module", &newObject<Def>, &Def::buildClassInfo};
        if (CError error = registerCreator(kRow)) {
            throw std::runtime_error(error.text());
        }
        std::string xml = R"(<audio:process-def name="main"><test:module name="m" )" + attributes + ">";
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            const std::string& name = parameters[i].name;
            xml +=
                R"(<audio:param-alloc param-name=")" + name + R"(" index=")" + std::to_string(i) + R"("/>)";
            xml +=
                R"(<audio:param name=")" + name +
                R"(" is-global="true" converter="real" min-values="-100000" max-values="100000" def-values=")" +
                std::to_string(parameters[i].value) + R"("/>)";
        }
        return xml + "</test:module></audio:process-def>";
    }

    GraphFixture graph_;
};

} // namespace qel::test
