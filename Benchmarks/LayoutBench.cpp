// Time to lay 1000 views out, and to follow a change.
#include "CViewArea.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace qel {
namespace {

void requireSuccess(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

// A window of 9 panels of 10 groups of 10 controls, as wide and high as they need.
class Window
{
public:
    Window()
    {
        CViewArea& root = add(nullptr, CPlacement::kFull, {CViewSize::Form::kNumber, 540.0},
                              {CViewSize::Form::kNumber, 373.0});
        for (int i = 0; i < 9; ++i) {
            CViewArea& panel = add(&root, i % 3 == 0 ? CPlacement::kTop : CPlacement::kLeft,
                                   {CViewSize::Form::kShare, i % 3 == 0 ? 1.0 : 0.5}, {});
            panel.setInnerBorder({4.0, 4.0, 4.0, 4.0});
            for (int k = 0; k < 10; ++k) {
                CViewArea& group = add(&panel, CPlacement::kInline, {}, {});
                group.setInlineVertical(k % 2 == 0);
                group.setNewInlineRow(k == 4);
                for (int n = 0; n < 10; ++n) {
                    add(&group, CPlacement::kInline, {CViewSize::Form::kNumber, 20.0 + n}, {})
                        .setCompactSize(CAxis::kY, 14.0);
                }
            }
        }
        add(&root, CPlacement::kOverlay, {}, {});
        solve();
    }
    ~Window()
    {
        while (!areas_.empty()) {
            areas_.pop_back();
        }
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void solve() { requireSuccess(context_.solveLayout()); }
    CViewArea& area(std::size_t index) { return *areas_[index]; }
    std::size_t size() const { return areas_.size(); }
    std::size_t variableCount() { return context_.getNetwork().getVariableCount(); }

private:
    CViewArea& add(CViewArea* parent, CPlacement placement, const CViewSize& width, const CViewSize& height)
    {
        CViewArea::Options options;
        options.parent = parent;
        areas_.push_back(std::make_unique<CViewArea>(context_, options));
        CViewArea& area = *areas_.back();
        requireSuccess(area.init());
        requireSuccess(area.setPlacement(placement));
        requireSuccess(area.setSize(CAxis::kX, width));
        requireSuccess(area.setSize(CAxis::kY, height));
        return area;
    }

    CLayoutContext context_{1.0};
    std::vector<std::unique_ptr<CViewArea>> areas_; // parents first
};

void layoutFromNothing(benchmark::State& state)
{
    std::size_t views = 0;
    std::size_t variables = 0;
    for (auto _ : state) {
        auto window = std::make_unique<Window>();
        state.PauseTiming();
        views = window->size();
        variables = window->variableCount();
        window.reset();
        state.ResumeTiming();
    }
    state.counters["views"] = static_cast<double>(views);
    state.counters["variables"] = static_cast<double>(variables);
}

// Each iteration makes one change; all that follows from it is laid out.
template <class Change>
void layoutAfter(benchmark::State& state, const Change& change)
{
    Window window;
    bool isOdd = false;
    for (auto _ : state) {
        isOdd = !isOdd;
        change(window, isOdd);
        window.solve();
    }
}

void layoutAfterOneWidth(benchmark::State& state)
{
    layoutAfter(state, [](Window& window, bool isOdd) {
        requireSuccess(window.area(500).setSize(CAxis::kX, {CViewSize::Form::kNumber, isOdd ? 60.0 : 20.0}));
    });
}

void layoutAfterHidingOne(benchmark::State& state)
{
    layoutAfter(state, [](Window& window, bool isOdd) { window.area(500).setVisible(isOdd); });
}

void layoutAfterWindowResize(benchmark::State& state)
{
    layoutAfter(state, [](Window& window, bool isOdd) {
        requireSuccess(window.area(0).setSize(CAxis::kX, {CViewSize::Form::kNumber, isOdd ? 640.0 : 540.0}));
    });
}

BENCHMARK(layoutFromNothing)->Unit(benchmark::kMicrosecond);
BENCHMARK(layoutAfterOneWidth)->Unit(benchmark::kMicrosecond);
BENCHMARK(layoutAfterHidingOne)->Unit(benchmark::kMicrosecond);
BENCHMARK(layoutAfterWindowResize)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace qel
