// Blocks of samples through a guest.
#include "Render/CBlockRunner.h"

#include <algorithm>
#include <chrono>

namespace qel::tools {

namespace {

// The guest may change its channel counts while it runs.
template <class Sample>
void fit(std::vector<std::vector<Sample>>& channels, std::vector<Sample*>& pointers, int count, int frames)
{
    channels.resize(static_cast<std::size_t>(count));
    pointers.resize(channels.size());
    for (std::size_t i = 0; i < channels.size(); ++i) {
        channels[i].assign(static_cast<std::size_t>(frames), Sample{});
        pointers[i] = channels[i].data();
    }
}

} // namespace

void CBlockRunner::run(const CSignal& input, CSignal& output, int frames, std::int64_t position)
{
    if (guest_.setup().isDouble) {
        runAs(double_, input, output, frames, position);
    } else {
        runAs(single_, input, output, frames, position);
    }
}

template <class Sample>
void CBlockRunner::runAs(CBuffers<Sample>& buffers, const CSignal& input, CSignal& output, int frames,
                         std::int64_t position)
{
    fit(buffers.inputs, buffers.inputPointers, guest_.inputCount(), frames);
    fit(buffers.outputs, buffers.outputPointers, guest_.outputCount(), frames);
    const auto narrow = [](double sample) { return static_cast<Sample>(sample); };
    for (std::size_t i = 0; i < std::min(input.size(), buffers.inputs.size()); ++i) {
        std::transform(input[i].begin(), input[i].begin() + frames, buffers.inputs[i].begin(), narrow);
    }
    const auto start = std::chrono::steady_clock::now();
    guest_.process(buffers.inputPointers.data(), buffers.outputPointers.data(), frames, position);
    processSec_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (std::size_t i = 0; i < output.size(); ++i) {
        if (i < buffers.outputs.size()) {
            std::ranges::copy(buffers.outputs[i], output[i].begin());
        } else {
            std::fill_n(output[i].begin(), frames, 0.0);
        }
    }
}

} // namespace qel::tools
