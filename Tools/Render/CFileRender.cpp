// One file through one instance of a guest.
#include "Render/CFileRender.h"

#include "Render/RenderError.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <mutex>
#include <sstream>

namespace qel::tools {

namespace {

// Longer delays are taken for a fault: feeding them out would keep the tool busy for ever.
constexpr double kLongestLatencySec = 60.0;

// Silence before the file, after which the effect is reset: its settings have then arrived, and its delay is
// known.
constexpr double kPrerollSec = 0.25;

// One library's instances are made, set up and ended one after another.
std::mutex& controlLock()
{
    static std::mutex lock;
    return lock;
}

CSignal silence(std::size_t channels, int frames)
{
    return CSignal(channels, std::vector<double>(static_cast<std::size_t>(frames)));
}

} // namespace

CFileRender::CFileRender(std::shared_ptr<CGuestLibrary> library, const CRenderSettings& settings,
                         const CRenderJob& job)
    : settings_(settings), job_(job), reader_(job.input),
      inputGain_(std::pow(10.0, settings.inputGainDb / 20.0)),
      input_(silence(static_cast<std::size_t>(reader_.channelCount()), settings.blockSize)),
      before_(reader_.channelCount(), reader_.rateHz()), after_(1, reader_.rateHz())
{
    openGuest(std::move(library));
}

CFileRender::~CFileRender()
{
    const std::scoped_lock lock(controlLock());
    guest_.reset();
}

void CFileRender::openGuest(std::shared_ptr<CGuestLibrary> library)
{
    const std::scoped_lock lock(controlLock());
    guest_ = std::make_unique<CGuestPlugin>(std::move(library), guestSetup(settings_, reader_.rateHz()));
    try {
        prepare();
    } catch (...) {
        guest_.reset(); // while the lock is held
        throw;
    }
}

void CFileRender::prepare()
{
    if (reader_.channelCount() > guest_->inputCount()) {
        throw CRenderError(CExitCode::kInput,
                           job_.input.string() + ": the file has " + std::to_string(reader_.channelCount()) +
                               " channels, and the effect takes " + std::to_string(guest_->inputCount()));
    }
    const int channels = std::min(reader_.channelCount(), guest_->outputCount());
    if (channels == 0) {
        throw CRenderError(CExitCode::kLibrary,
                           guest_->library().path().string() + ": the effect has no outputs");
    }
    configureGuest(*guest_, settings_);
    presetName_ = guest_->programCount() > 0 ? guest_->programName(guest_->program()) : "";
    runner_ = std::make_unique<CBlockRunner>(*guest_);
    output_ = silence(static_cast<std::size_t>(channels), settings_.blockSize);
    after_ = CSignalMeters(channels, reader_.rateHz());
    if (!job_.output.empty()) {
        const auto tail = static_cast<std::int64_t>(settings_.tailSec * reader_.rateHz());
        writer_ = std::make_unique<CAudioFileWriter>(job_.output, reader_, channels, settings_.format,
                                                     reader_.frameCount() + tail);
    }
    preroll();
}

void CFileRender::preroll()
{
    guest_->resume();
    const auto frames = std::llround(kPrerollSec * reader_.rateHz());
    if (frames > 0) {
        CBlockRunner quiet(*guest_);
        const CSignal nothing = silence(input_.size(), settings_.blockSize);
        for (std::int64_t left = frames; left > 0;) {
            const int count = static_cast<int>(std::min<std::int64_t>(left, settings_.blockSize));
            quiet.run(nothing, output_, count, -left);
            left -= count;
        }
        guest_->suspend();
        guest_->resume();
    }
    latency_ = guest_->latencySamples();
    toSkip_ = latency_;
}

CRenderResult CFileRender::run()
{
    while (!isAtEnd_ || emitted_ < wanted_) {
        if (CPendingFile::isInterrupted()) {
            throw CRenderError(CExitCode::kInterrupted, "interrupted");
        }
        const int frames = settings_.blockSize;
        readBlock(frames);
        runner_->run(input_, output_, frames, fed_);
        fed_ += frames;
        emit(frames);
    }
    before_.finish();
    after_.finish();
    CRenderResult result{job_,
                         presetName_,
                         reader_.formatName(),
                         writer_ ? writer_->formatName() : "",
                         reader_.rateHz(),
                         std::move(before_),
                         std::move(after_),
                         latency_,
                         runner_->processSec(),
                         writer_ ? writer_->clippedCount() : 0};
    if (writer_) {
        writer_->finish();
    }
    return result;
}

void CFileRender::readBlock(int frames)
{
    int got = 0;
    while (!isAtEnd_ && got < frames) {
        const int more = reader_.read(input_, got, frames - got);
        got += more;
        isAtEnd_ = more == 0;
    }
    for (std::vector<double>& channel : input_) {
        std::for_each(channel.begin(), channel.begin() + got,
                      [this](double& sample) { sample *= inputGain_; });
        std::fill(channel.begin() + got, channel.begin() + frames, 0.0);
    }
    read_ += got;
    if (isAtEnd_) {
        wanted_ = read_ + std::llround(settings_.tailSec * reader_.rateHz());
    }
    // With its tail of silence, so that levels before and after are of the same time.
    const std::int64_t counted = isAtEnd_ ? std::min<std::int64_t>(frames, wanted_ - fed_) : frames;
    before_.add(input_, 0, static_cast<int>(std::max<std::int64_t>(0, counted)));
}

void CFileRender::emit(int frames)
{
    const int latency = guest_->latencySamples();
    if (latency != latency_) {
        toSkip_ += latency - latency_;
        latency_ = latency;
    }
    if (latency_ > kLongestLatencySec * reader_.rateHz()) {
        throw CRenderError(CExitCode::kLibrary,
                           "the effect claims a delay of " + std::to_string(latency_) + " samples");
    }
    if (toSkip_ < 0) {
        pass(silence(output_.size(), static_cast<int>(-toSkip_)), 0, static_cast<int>(-toSkip_));
        toSkip_ = 0;
    }
    const int skipped = static_cast<int>(std::min<std::int64_t>(toSkip_, frames));
    toSkip_ -= skipped;
    requireFinite(skipped, frames - skipped);
    pass(output_, skipped, frames - skipped);
}

void CFileRender::pass(const CSignal& signal, int offset, int frames)
{
    if (isAtEnd_) {
        frames = static_cast<int>(std::min<std::int64_t>(frames, wanted_ - emitted_));
    }
    after_.add(signal, offset, frames);
    if (writer_) {
        writer_->write(signal, offset, frames);
    }
    emitted_ += frames;
}

void CFileRender::requireFinite(int offset, int frames) const
{
    for (std::size_t channel = 0; channel < output_.size(); ++channel) {
        for (int i = offset; i < offset + frames; ++i) {
            if (std::isfinite(output_[channel][static_cast<std::size_t>(i)])) {
                continue;
            }
            std::ostringstream text;
            text << job_.input.string() << ": the effect puts out what is no number, first in channel "
                 << channel + 1 << " at " << std::fixed << std::setprecision(4)
                 << static_cast<double>(emitted_ + i - offset) / reader_.rateHz() << " s";
            throw CRenderError(CExitCode::kNotFinite, text.str());
        }
    }
}

} // namespace qel::tools
