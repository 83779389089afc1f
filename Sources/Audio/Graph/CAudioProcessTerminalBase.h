// What all processes with module instances have in common.
#pragma once

#include "CAudioFade.h"
#include "CAudioModule.h"
#include "CAudioProcessBase.h"

namespace qel {

// Sums and silences that were made for a step's inputs; gives them back when the step is over.
class CAudioOwnedInputs
{
public:
    explicit CAudioOwnedInputs(CKernelContext& kernels) : kernels_(kernels) {}
    ~CAudioOwnedInputs()
    {
        for (const CBufferRef buffer : buffers_) {
            kernels_.release(buffer);
        }
    }
    CAudioOwnedInputs(const CAudioOwnedInputs&) = delete;
    CAudioOwnedInputs& operator=(const CAudioOwnedInputs&) = delete;
    void add(CBufferRef buffer) { buffers_.push(buffer); }

private:
    CKernelContext& kernels_;
    CInlineArray<CBufferRef, 6> buffers_;
};

// Divides the channels of the stream among module instances, as the definition says: one instance a channel
// (the default), one a group (`is-grouped`) or one for all (`is-terminal-whole`); and moves buffers between
// ports and instances.
class CAudioProcessTerminalBase : public CAudioProcessBase
{
public:
    explicit CAudioProcessTerminalBase(const CAudioProcessDefBase& def);

    CError init() override;
    void resolveKernels() override { fadeKernels_ = CAudioFade::findKernels(graph().kernels); }
    void syncLinks() override;

protected:
    // Where the instances stand now.
    const CAudioVector<CAudioModulePlace>& places() const { return places_; }
    // True if an instance that stood at one of them could not go on there since the last syncLinks().
    bool hasMoved(std::size_t place) const { return (movedPlaces_ >> place & 1) != 0; }
    bool isSmooth() const { return isSmooth_; }
    void startFade(CAudioFade& fade) const { fade.start(graph().kernels, fadeKernels_, fadeSamples()); }

    // The format of what the module puts out, from that of what it takes.
    virtual CAudioStreamFormat outputFormat(const CAudioStreamFormat& input) const { return input; }
    // Samples put out for `count` taken.
    virtual int outputCount(int count) const { return count; }

    // Fills the step's inputs for the first `portCount` ports. A port that is not connected, or lacks a
    // channel, gives silence where some other port has it.
    void gatherInputs(CAudioModuleStep& step, CAudioOwnedInputs& owned, const CAudioModulePlace& place,
                      int portCount);
    void emitOutputs(CAudioModuleStep& step, const CAudioModulePlace& place);

private:
    int fadeSamples() const;
    CAudioModulePlace& placeFor(const Channel& channel, std::size_t& used);

    CAudioVector<CAudioModulePlace> places_;
    std::uint32_t movedPlaces_ = 0; // bit by bit
    CAudioFade::Kernels fadeKernels_;
    bool isSmooth_ = false;
    double fadeSec_ = 0.0;
};

} // namespace qel
