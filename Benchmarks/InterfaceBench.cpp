// Time that the interface takes of its thread, off the screen, on a running instance: for each frame of 25
// ms, all that happens in it.
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamConverter.h"
#include "CKnob.h"
#include "Views/CInterfaceHost.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace qel {
namespace {

constexpr double kFrameSec = 0.025;
constexpr const char* kKnob = "ui.main-window.c.mix.lfgain.knob-base";

class Interface
{
public:
    tools::CInterfaceHost host{{}};

    CKnob& knob(const char* path)
    {
        auto* const found = dynamic_cast<CKnob*>(host.root().findObject(path));
        if (!found) {
            throw std::runtime_error(std::string("no knob ") + path);
        }
        return *found;
    }
    void frame() { host.user().advance(kFrameSec); }
};

void frameWithNothingToDo(benchmark::State& state)
{
    Interface interface;
    for (auto _ : state) {
        interface.frame();
    }
}

// The movement, the way to the parameter and back, and the picture.
void frameWithAKnobDragged(benchmark::State& state)
{
    Interface interface;
    CKnob& knob = interface.knob(kKnob);
    interface.host.hover(kKnob);
    interface.host.user().press();
    const std::int32_t before = knob.getPictureIndex();
    double up = 8.0;
    for (auto _ : state) {
        interface.host.user().moveBy(0.0, -up);
        interface.frame();
        if (up > 0.0 && knob.getPictureIndex() == before) {
            state.SkipWithError("the knob does not turn");
        }
        up = -up;
    }
    interface.host.user().release();
}

void frameWithNineKnobsAutomated(benchmark::State& state)
{
    Interface interface;
    CKnob& knob = interface.knob(kKnob);
    constexpr const char* kParams[] = {"lf-gain", "sat-gain",   "sub-gain",   "comp-drive", "mix-gain",
                                       "drymix",  "xover-freq", "punch-gain", "sat-drive"};
    bool isHigh = false;
    for (auto _ : state) {
        state.PauseTiming();
        isHigh = !isHigh;
        const std::int32_t before = knob.getPictureIndex();
        CAudioParamContext context;
        for (const char* const name : kParams) {
            CAudioParam& param =
                interface.host.instance().getParams().getParam(CString("plugin.modMain.modDrumfell.") + name);
            const CAudioParamInfo& info = param.getInfo();
            const double part = isHigh ? 0.75 : 0.25;
            param.setValue(0, 0, 0, info.converters[0]->normToValue(info, 0, part), context);
        }
        state.ResumeTiming();
        interface.frame();
        if (knob.getPictureIndex() == before) {
            state.SkipWithError("the knobs do not turn");
        }
    }
}

BENCHMARK(frameWithNothingToDo)->Unit(benchmark::kMicrosecond);
BENCHMARK(frameWithAKnobDragged)->Unit(benchmark::kMicrosecond);
BENCHMARK(frameWithNineKnobsAutomated)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace qel
