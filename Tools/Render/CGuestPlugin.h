// One instance of a VST 2.4 effect, and the host that it sees.
#pragma once

#include "Render/CGuestLibrary.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qel::tools {

// Call order: construct (opens the effect and tells it rate, block size and precision), set programs,
// parameters and state, resume(), process() as often as wanted, suspend(). Tells the effect that it runs
// offline. Texts of the effect are cut where its buffer ends and cleaned of what no terminal should get.
//
// One thread at a time.
class CGuestPlugin
{
public:
    struct Setup
    {
        double rateHz = 48000.0;
        int maxBlock = 512; // samples
        bool isDouble = false;
    };

    // Throws CRenderError (kLibrary) if there is no effect or it is not able to do what `setup` says.
    CGuestPlugin(std::shared_ptr<CGuestLibrary> library, const Setup& setup);
    ~CGuestPlugin();
    CGuestPlugin(const CGuestPlugin&) = delete;
    CGuestPlugin& operator=(const CGuestPlugin&) = delete;

    const Setup& setup() const { return setup_; }
    const CGuestLibrary& library() const { return *library_; }
    std::string name();
    std::string vendor();
    std::int32_t uniqueId() const { return effect_->uniqueID; }
    std::int32_t version() const { return effect_->version; }
    int inputCount() const { return effect_->numInputs; }
    int outputCount() const { return effect_->numOutputs; }
    bool canDouble() const { return effect_->flags & vst24::kCanDoubleReplace; }

    // Programs and parameters count from 0; indices are the caller's to check.
    int programCount() const { return effect_->numPrograms; }
    int program();
    void setProgram(int index);
    std::string programName(int index);

    int parameterCount() const { return effect_->numParams; }
    std::string parameterName(int index);
    std::string parameterLabel(int index);
    std::string parameterDisplay(int index);
    float parameter(int index) { return effect_->getParameter(effect_, index); }
    void setParameter(int index, float norm) { effect_->setParameter(effect_, index, norm); }
    // Lets the effect read the text and set itself. False if it does not.
    bool setParameterText(int index, const std::string& text);

    bool setChunk(std::span<const std::uint8_t> bytes, bool isPreset);

    void resume();
    void suspend();
    // `position` is the sample where the block starts, for the effect's clock. Pointers: one for each of the
    // effect's inputs and outputs. The sample type must be that of the setup.
    void process(float** inputs, float** outputs, int frames, std::int64_t position);
    void process(double** inputs, double** outputs, int frames, std::int64_t position);
    // Changes while it runs, when the effect says so.
    int latencySamples() const { return effect_->initialDelay > 0 ? effect_->initialDelay : 0; }

private:
    static std::intptr_t answer(AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                void* ptr, float opt);
    std::intptr_t answerOwn(std::int32_t opcode, void* ptr);
    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
                           void* ptr = nullptr, float opt = 0.0f);
    std::string text(std::int32_t opcode, std::int32_t index = 0);
    void open();
    void setPosition(std::int64_t position);

    std::shared_ptr<CGuestLibrary> library_;
    Setup setup_;
    AEffect* effect_ = nullptr;
    VstTimeInfo time_{};
    bool isRunning_ = false;
    std::string folder_; // of the library, as the effect may ask for it
};

} // namespace qel::tools
