// Level meters beside the signal chain.
#pragma once

#include "CAudioProcessTerminalBase.h"
#include "CKernelState.h"
#include "Definitions/CAudioProcessDefBase.h"
#include "MeterKernels.h"

namespace qel {

class CAudioVizCollector;

// Tag audio:modMeter. `is-diff`: reports the ratio of input 0 to input 1 instead of a level.
// `is-compression`: the smallest level wins, for gain reduction. `is-inverted` is for whoever shows the
// levels.
class CModMeterDef : public CAudioProcessDefBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    std::unique_ptr<CAudioProcessBase> createProcess() const override;

    bool isDiff() const { return isDiff_; }
    bool isInverted() const { return isInverted_; }
    bool isCompression() const { return isCompression_; }

private:
    bool isDiff_ = false;
    bool isInverted_ = false;
    bool isCompression_ = false;
};

// What all modules that measure have: where their findings go.
class CModStatsModule : public CAudioWholeModule
{
public:
    struct Target
    {
        CAudioVizCollector* collector = nullptr; // null: nowhere
        std::int32_t source = -1;
        double framesPerSec = 30.0;
    };
};

// One channel of a meter. The signal goes in and nothing comes out; at the end of each visual frame a finding
// goes to the collector, wherever in a step that falls.
class CModMeterModule : public CModStatsModule
{
public:
    struct Settings
    {
        double peakSec = 1.0;
        double rmsSec = 0.15;
        double biasSec = 2.0;
        double releaseSec = 0.0;
        double gain = 1.0;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    CModMeterModule(CKernelContext& kernels, const CModMeterDef& def);
    ~CModMeterModule() override;

    void resolveKernels(CKernelContext& kernels) override;
    void reset() override;
    // Starts afresh with these settings; the clock runs on.
    void configure(const Settings& settings, const CAudioModulePlace& place, const Target& target);
    // Of the channel; its findings bear it.
    void setGroup(int group) { group_ = group; }
    void process(CAudioModuleStep& step) override;

private:
    // Room for a history, which is grown by steps of this: peak times up to 6 s need no more memory than the
    // first.
    static constexpr std::int32_t kHistoryStep = 200;

    void makeRoom(std::int32_t history);
    void emit();

    CKernelContext& kernels_;
    const bool isDiff_;
    const bool isCompression_;
    int initKernel_ = -1;
    int runKernel_ = -1;
    int readKernel_ = -1;

    Settings settings_;
    CAudioModulePlace place_;
    Target target_;
    int group_ = 0;
    int frameLength_ = 1;
    int samplesLeft_ = 0; // of the frame that runs

    CKernelState<CMeterState> state_;
    CBufferRef history_;
    CBufferRef readOut_;
    std::int32_t room_ = 0;
};

// The meter process. Its findings bear its full name as their source.
class CModMeter : public CAudioProcessTerminalBase
{
public:
    explicit CModMeter(const CModMeterDef& def) : CAudioProcessTerminalBase(def), def_(def) {}

    CError init() override;
    void registerKernels() override;
    void syncLinks() override;
    void applyEvents() override;
    void reset(double positionSec) override;
    std::int64_t steadySamples(double rateHz) const override;

protected:
    int slotCount() const override;
    void step(int count) override;

private:
    struct Unit
    {
        const CAudioModulePlace* place = nullptr; // one of places()
        CModMeterModule::Settings settings;
        CAudioPtr<CModMeterModule> module;
        bool isNew = true;
    };

    const CModMeterDef& def_;
    CModStatsModule::Target target_;
    CAudioVector<Unit> units_;
};

} // namespace qel
