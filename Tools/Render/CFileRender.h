// One file through one instance of a guest.
#pragma once

#include "Render/CBlockRunner.h"
#include "Render/RenderSettings.h"
#include "Render/SignalMeters.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qel::tools {

// What there is to tell about a finished file.
struct CRenderResult
{
    CRenderJob job;
    std::string presetName;
    std::string inputFormat;
    std::string outputFormat; // empty without an output
    int rateHz = 0;
    CSignalMeters before;
    CSignalMeters after;
    int latencySamples = 0; // at the end
    double processSec = 0.0;
    std::int64_t clippedCount = 0; // samples limited by an integer format
};

// Streams the file, so its length does not matter. Output sample n belongs to input sample n: what the effect
// delays is cut at the front and fed out at the end. When the delay changes in mid-run, the output is cut or
// filled up with silence where the changed block begins, so that both sides of the change stay in time.
class CFileRender
{
public:
    // Opens the file and sets the guest up. Renders of several threads take turns in this and in being
    // destroyed, since many effects share state between their instances; they run() at the same time. Throws
    // CRenderError.
    CFileRender(std::shared_ptr<CGuestLibrary> library, const CRenderSettings& settings,
                const CRenderJob& job);
    ~CFileRender();
    CFileRender(const CFileRender&) = delete;
    CFileRender& operator=(const CFileRender&) = delete;

    // Throws CRenderError; nothing is left of the output then.
    CRenderResult run();

private:
    void openGuest(std::shared_ptr<CGuestLibrary> library);
    void prepare();
    void preroll();
    void readBlock(int frames);
    void emit(int frames);
    void pass(const CSignal& signal, int offset, int frames);
    void requireFinite(int offset, int frames) const;

    const CRenderSettings& settings_;
    CRenderJob job_;
    CAudioFileReader reader_;
    std::unique_ptr<CGuestPlugin> guest_;
    std::unique_ptr<CBlockRunner> runner_;
    std::unique_ptr<CAudioFileWriter> writer_;
    std::string presetName_;

    double inputGain_;

    CSignal input_;
    CSignal output_;
    CSignalMeters before_;
    CSignalMeters after_;
    bool isAtEnd_ = false;     // of the file
    std::int64_t read_ = 0;    // samples of the file
    std::int64_t fed_ = 0;     // samples given to the guest
    std::int64_t wanted_ = 0;  // samples of output, once isAtEnd_
    std::int64_t emitted_ = 0; // samples of output
    std::int64_t toSkip_ = 0;  // samples of the guest's output still to cut
    int latency_ = 0;          // samples
};

} // namespace qel::tools
