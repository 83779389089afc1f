// A chain of filter bands.
#pragma once

#include "CAudioFilterGenArray.h"
#include "CAudioProcessTerminal.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// The filters of one instance: all sections of all bands in a row, with a state for each section and channel.
// Slots: 0 `count` of bands (1 without such a parameter), 1 `index` of each band's generator, 2 and up its
// parameters, by default `freq`, `gain` and `bw`. A band is built anew only when one of its values has
// changed; a section whose kind stays the same then keeps its memory, as far as its kernels do. Without any
// section the input passes by reference.
class CModFilterModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kMaxBands = 64;
    static constexpr int kMaxValues = 6;
    static constexpr int kSlots = 2 + kMaxValues; // band count and generator index come first

    // The room inside is enough for every use there is, so that no change allocates.
    struct Band
    {
        int index = 0;
        const CAudioFilterGen* generator = nullptr; // of this index; null passes the signal
        CInlineArray<double, kMaxValues> values;

        bool operator==(const Band& other) const;
    };
    struct Settings
    {
        CInlineArray<Band, 4> bands;

        bool operator==(const Settings& other) const;
    };

    // Leaves the generators to the process, which knows the array.
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModFilterModule(CKernelContext& kernels) : kernels_(kernels) {}
    ~CModFilterModule() override { dropBands(0); }

    // The kernels of filter sections are among the well-known ones.
    void resolveKernels(CKernelContext&) override {}
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void takeUp(CAudioModule& running) override;
    void reset() override;
    void process(CAudioModuleStep& step);

private:
    struct Stage
    {
        EFilterFamily kind = EFilterFamily::kFree;
        double gain = 1.0;
        CBufferRef coefficients;
        CInlineArray<CBufferRef, 2> states; // by channel
    };
    struct RunningBand
    {
        Band settings;
        CInlineArray<Stage, 4> stages; // one for each section of the filter
    };

    void rebuild(RunningBand& band);
    void openStage(Stage& stage, EFilterFamily kind);
    void closeStage(Stage& stage);
    void setCoefficients(Stage& stage, const CFilterSection& section);
    // Gives the stage's states its coefficients, and the memory of `running`, which may be the stage itself;
    // null clears it.
    void load(Stage& stage, const Stage* running);
    void runStage(CAudioModuleStep& step, const Stage& stage, std::size_t channel);
    void dropStages(RunningBand& band, std::size_t count);
    void dropBands(std::size_t count);

    CKernelContext& kernels_;
    CInlineArray<RunningBand, 1> bands_;
    double sampleRateHz_ = 0.0;
    std::size_t channelCount_ = 0;
};

class CModFilterDef;

// The run-time process. Half-band filters among its bands add to the latency of the stream.
class CModFilter : public CAudioProcessTerminal<CModFilterModule>
{
public:
    explicit CModFilter(const CModFilterDef& definition);

    void syncLinks() override;
    void applyEvents() override;
    bool takeUpSteadily(std::int64_t aheadSamples, double rateHz) override;

    // Of the bands at work, at this process's rate.
    double latencySamples(int channelGroup) const;

protected:
    CModFilterModule::Settings readSettings(const CAudioModulePlace& place) const override;
    CAudioStreamFormat outputFormat(const CAudioStreamFormat& input) const override;

private:
    const CModFilterDef& definition_;
    CInlineArray<double, 8> latencies_; // as places()
};

// Definition. `gen-array` is the path of the array whose generators the bands choose from; init fails without
// one.
class CModFilterDef : public CAudioProcessDefBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    std::unique_ptr<CAudioProcessBase> createProcess() const override;

    const CAudioFilterGenArray& generators() const { return *generators_; }
    // True if some generator of the array has one.
    bool hasLatency() const { return hasLatency_; }

private:
    CString genArray_;
    const CAudioFilterGenArray* generators_ = nullptr;
    bool hasLatency_ = false;
};

} // namespace qel
