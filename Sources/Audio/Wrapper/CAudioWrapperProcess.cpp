// The host-independent half of one plug-in instance: processing.
#include "CAudioWrapper.h"

#include "CAudioEnv.h"
#include "CAudioExtParamList.h"
#include "CAudioInterfaceBase.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioVizCollector.h"
#include "CKernelContext.h"
#include "CModOutput.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr int kOfflineLevel = 4;

// No signal is as loud as 180 dB above full scale, but memory that nobody has filled may be. Filters and
// envelopes would take seconds to minutes to forget it, and what is not finite they would never forget.
constexpr double kLoudest = 1e9;

template <class Sample>
void widenSamples(const void* channel, int start, double* out, int count)
{
    const Sample* from = static_cast<const Sample*>(channel) + start;
    for (int i = 0; i < count; ++i) {
        const double sample = from[i];
        out[i] = std::fabs(sample) <= kLoudest ? sample : 0.0;
    }
}

} // namespace

void CAudioWrapper::resume(const CAudioHostSetup& setup)
{
    const bool isNewLayout = setup.inputCount != setup_.inputCount || setup.outputCount != setup_.outputCount;
    setup_ = setup;
    setup_.inputCount = std::clamp(setup.inputCount, 0, kMaxChannels);
    setup_.outputCount = std::clamp(setup.outputCount, 0, kMaxChannels);
    setup_.sidechainCount = hasSidechain_ ? std::clamp(setup.sidechainCount, 0, setup_.inputCount) : 0;
    env_->setSampleRateHz(setup.sampleRateHz);
    updateProcessLevel();
    if (isNewLayout) {
        env_->requestRestart();
    }
    updateProcessConfig();
    if (env_->takeRestart()) {
        resetProcesses();
    }
    setInitialDelay(env_->getLatencySamples());
    tellEnvironment();
    isRunning_ = true;
}

void CAudioWrapper::tellEnvironment()
{
    interfaceBase_->setEnvironment({.sampleRateHz = env_->getSampleRateHz(),
                                    .hostInputs = setup_.inputCount,
                                    .hostOutputs = setup_.outputCount,
                                    .internalChannels = internalChannelCount_,
                                    .groups = groupCount_});
}

void CAudioWrapper::setDefaultLayout(int inputCount, int outputCount)
{
    const CLock lock(env_->getLock());
    setup_.inputCount = std::clamp(inputCount, 0, kMaxChannels);
    setup_.outputCount = std::clamp(outputCount, 0, kMaxChannels);
}

void CAudioWrapper::requestRestart()
{
    env_->requestRestart();
}

void CAudioWrapper::suspend()
{
    isRunning_ = false;
    resetProcesses();
}

void CAudioWrapper::resetProcesses()
{
    main_.root()->reset(env_->getPositionSec());
    outputProcess_->reset(env_->getPositionSec());
    viz_->reset();
    interfaceBase_->clearClients();
}

std::int32_t CAudioWrapper::getLatencySamples() const
{
    return env_->getLatencySamples();
}

// --- audio thread

void CAudioWrapper::processBlock(const CAudioHostBlock& block)
{
    env_->setInProcess(true);
    viz_->beginBlock();
    params_->applyPending(env_->getPositionSec());
    extParams_->applyPosted(env_->getPositionSec());
    updateProcessLevel();
    updateTempo();
    for (int start = 0; start < block.count; start += kMaxSlice) {
        graph_->positionSec = env_->getPositionSec() + start / env_->getSampleRateHz();
        processSlice(block, start, std::min(kMaxSlice, block.count - start));
    }
    env_->advance(block.count / env_->getSampleRateHz());
    updateLatency();
    env_->setInProcess(false);
    if (isIoChanged_) {
        isIoChanged_ = false;
        ioChanged();
    }
}

// A change that finds no room on the audio side's road is made at the next block.
void CAudioWrapper::updateProcessLevel()
{
    const int level = hostProcessLevel();
    const bool isOffline = level == kOfflineLevel;
    if (isOffline != (lastProcessLevel_ == kOfflineLevel)) {
        isOfflinePosted_ = false;
    }
    lastProcessLevel_ = level;
    if (!isOfflinePosted_) {
        isOfflinePosted_ =
            params_->changeFromAudio(*hostParams_[kOffline], isOffline ? 1.0 : 0.0, env_->getPositionSec());
    }
}

void CAudioWrapper::updateTempo()
{
    if (!usesHostBpm_) {
        return;
    }
    const std::optional<double> tempo = hostTempo();
    if (tempo && *tempo != lastBpm_ &&
        params_->changeFromAudio(*hostParams_[kBpm], *tempo, env_->getPositionSec())) {
        lastBpm_ = *tempo;
    }
}

void CAudioWrapper::processSlice(const CAudioHostBlock& block, int start, int count)
{
    const int mainCount = setup_.inputCount - setup_.sidechainCount;
    feed(mainFeed_, block, 0, mainCount, start, count);
    if (hasSidechain_) {
        feed(sidechainFeed_, block, mainCount, setup_.sidechainCount, start, count);
    }
    main_.root()->process();
    CAudioHostOutputs outputs;
    outputs.channels = block.outputs;
    outputs.channelCount = setup_.outputCount;
    outputs.isDouble = block.isDouble;
    outputs.offset = static_cast<std::size_t>(start);
    outputs.count = count;
    outputProcess_->write(outputs);
}

void CAudioWrapper::feed(Feed& target, const CAudioHostBlock& block, int firstChannel, int channelCount,
                         int start, int count)
{
    const CAudioStreamFormat* format = graph_->formats.intern({env_->getSampleRateHz(), 0.0, 0});
    target.port->setChannels((CChannelMask{1} << channelCount) - 1);
    for (int channel = 0; channel < channelCount; ++channel) {
        target.port->emit(channel, widen(block, firstChannel + channel, start, count), count, format);
    }
}

CBufferRef CAudioWrapper::widen(const CAudioHostBlock& block, int channel, int start, int count)
{
    const CBufferRef buffer = graph_->kernels.allocateSamples(static_cast<std::size_t>(count));
    double* samples = graph_->kernels.samples(buffer);
    const void* from = block.inputs ? block.inputs[channel] : nullptr;
    if (!samples) {
        return buffer;
    }
    if (!from) {
        std::fill_n(samples, count, 0.0);
    } else if (block.isDouble) {
        widenSamples<double>(from, start, samples, count);
    } else {
        widenSamples<float>(from, start, samples, count);
    }
    return buffer;
}

void CAudioWrapper::updateLatency()
{
    const auto latency = static_cast<std::int32_t>(std::lround(outputProcess_->format().latencySamples));
    if (latency != env_->getLatencySamples()) {
        env_->setLatencySamples(latency);
        isIoChanged_ = true;
    }
}

} // namespace qel
