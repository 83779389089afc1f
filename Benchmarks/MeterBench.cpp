// Time of a frame in which the meters of the main window move.
#include "CDrawLoad.h"
#include "CVizExchange.h"
#include "Views/CInterfaceHost.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <stdexcept>

namespace qel {
namespace {

// The main window with levels of two channels that swing over most of the scale, as between two drum beats.
class Meters
{
public:
    Meters()
    {
        host_.user().advance(5.0);
        exchange_ = dynamic_cast<CVizExchange*>(host_.root().findObject("ui.viz-exchange"));
        if (!exchange_) {
            throw std::runtime_error("no exchange");
        }
        exchange_->onVizSource("plugin.modMain.modMeterOut", kId);
        for (int i = 0; i < 4; ++i) {
            frame();
        }
    }
    void frame()
    {
        phase_ += 0.2;
        for (std::int32_t channel = 0; channel < 2; ++channel) {
            CAudioVizDataMeter data;
            data.id = kId;
            data.element = channel;
            const double levelDb = -25.0 + 15.0 * std::sin(phase_ + channel);
            data.level = std::pow(10.0, levelDb / 20.0);
            data.peak = data.level * 2.0;
            exchange_->onVizData(data);
        }
        // What the exchange does in each round, but for asking the audio side.
        if (CError error = sendEvent(*exchange_, "on-timer", {})) {
            throw std::runtime_error(error.text());
        }
        host_.mainWindow().renderFrame();
    }

private:
    static constexpr std::int32_t kId = 77;

    tools::CInterfaceHost host_{{}};
    CVizExchange* exchange_ = nullptr;
    double phase_ = 0.0;
};

void moveMeters(benchmark::State& state)
{
    Meters meters;
    for (auto _ : state) {
        meters.frame();
    }
}

BENCHMARK(moveMeters)->Name("interface/frame of moving meters")->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace qel
