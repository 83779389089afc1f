// The first half of the binary interface as virtual calls: what every effect has had from the start.
#pragma once

#include "AEffEditor.h"
#include "Vst24.h"

#include <atomic>
#include <memory>

// Holds the record that a host works with and turns its calls into virtual ones. The host owns the effect: it
// lives until the host sends `close`.
//
// Hosts are outside: a call with a null pointer for an answer or a text, or a number that does not fit, ends
// here and answers 0. What indices and values mean is for the overriding class to check. Calls come in any
// order, some of them in several threads at once.
class AudioEffect
{
public:
    AudioEffect(AudioMasterCallback audioMaster, std::int32_t numPrograms, std::int32_t numParams);
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;
    virtual ~AudioEffect();

    AEffect* getAeffect() { return &effect_; }
    AEffEditor* getEditor() const { return editor_.get(); }

    // --- audio thread
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames) = 0;
    virtual void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) = 0;
    // Adds to what the outputs hold. Obsolete, yet called.
    virtual void process(float** inputs, float** outputs, std::int32_t frames) = 0;

    // --- any thread
    virtual void setParameter(std::int32_t index, float value) = 0;
    virtual float getParameter(std::int32_t index) = 0;

    // --- the host's control thread
    virtual void open() {}
    virtual void close() {}
    virtual void suspend() {}
    virtual void resume() {}
    virtual void setSampleRate(float rateHz);
    virtual void setBlockSize(std::int32_t frames);

    virtual std::int32_t getProgram() { return curProgram_; }
    virtual void setProgram(std::int32_t program) { curProgram_ = program; }
    virtual void setProgramName(const char*) {}
    virtual void getProgramName(char* text) { *text = 0; }
    virtual void getParameterLabel(std::int32_t, char* text) { *text = 0; }
    virtual void getParameterDisplay(std::int32_t, char* text) { *text = 0; }
    virtual void getParameterName(std::int32_t, char* text) { *text = 0; }
    // The state, in memory that stays until the next call. Returns its size, or 0.
    virtual std::intptr_t getChunk(void** data, bool isPreset);
    // True if the state is now that of the chunk.
    virtual bool setChunk(const void* data, std::intptr_t size, bool isPreset);

    virtual std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                   float opt);

protected:
    float getSampleRate() const { return sampleRateHz_.load(std::memory_order_relaxed); }
    std::int32_t getBlockSize() const { return blockSize_.load(std::memory_order_relaxed); }

    // --- what the host reads
    void setUniqueID(std::int32_t id) { effect_.uniqueID = id; }
    void setNumInputs(std::int32_t count) { effect_.numInputs = count; }
    void setNumOutputs(std::int32_t count) { effect_.numOutputs = count; }
    void setNumPrograms(std::int32_t count) { effect_.numPrograms = count; }
    void setNumParams(std::int32_t count) { effect_.numParams = count; }
    void setVersion(std::int32_t version) { effect_.version = version; }
    void canProcessReplacing(bool can) { setFlag(vst24::kCanReplace, can); }
    void programsAreChunks(bool areChunks) { setFlag(vst24::kProgramChunks, areChunks); }
    // From any thread: the host may be reading it.
    void setInitialDelay(std::int32_t samples);
    void setEditor(std::unique_ptr<AEffEditor> editor);
    void setFlag(std::int32_t flag, bool isSet);

    // --- calls to the host; 0 without one
    bool hasHost() const { return audioMaster_ != nullptr; }
    std::intptr_t callHost(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
                           void* ptr = nullptr, float opt = 0.0f);
    void setParameterAutomated(std::int32_t index, float value);
    std::int32_t getMasterVersion();

    // A number of the host as an index; -1 if it cannot be one.
    static std::int32_t toIndex(std::intptr_t value);

    std::atomic<std::int32_t> curProgram_{0};

private:
    std::intptr_t dispatchEdit(std::int32_t opcode, void* ptr);

    AEffect effect_{};
    AudioMasterCallback audioMaster_;
    std::unique_ptr<AEffEditor> editor_;
    std::atomic<float> sampleRateHz_{44100.0f};
    std::atomic<std::int32_t> blockSize_{1024};
};
