// The values of a meter.
#pragma once

#include "CLevelMeterListener.h"
#include "CView.h"

namespace qel {

class CMinMax;
class CValueList;

// Tag `ui:level-meter-base`. Turns what its children of tag "ui:level-meter-listener" hear into decibels. By
// itself it draws nothing: texts show its attributes "sum-value" and "sum-peak", the greatest level and the
// greatest peak of all channels.
//
//     min-max            path of the range that is shown; -60 to 0 without it
//     is-inverted        the other way round: a level below 0 dB is above it
//     is-raw-data        no decibels but what was measured
//     out-format         how numbers are written, see NumberFormat.h; "%1.2f" by default
//     out-value-list     path of a CValueList that is given the level of each channel
//     is-export-peaks    gives it the peaks instead
//
// Fires "values-changed" when a channel falls silent, and "audio-channels-list-update" when there are others.
class CLevelMeterBase : public CView
{
public:
    // What has no level in decibels has this one.
    static constexpr double kFloorDb = -300.0;

    struct Channel
    {
        double value = kFloorDb;
        double peak = kFloorDb;
        bool isSilent = true; // at the floor, which has a text of its own
        bool isPeakSilent = true;
        bool isActive = false;

        bool operator==(const Channel&) const = default;
    };

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;

    const std::vector<Channel>& getChannels() const { return channels_; }

    // --- for listeners
    CError onListenerUpdate();
    // Fires the event on the view, and raises it for others.
    CError announce(const char* event);

protected:
    // The channels have other values; their number may be another.
    virtual void onValuesChanged() {}
    // The range is another one.
    virtual void onRangeChanged() { onValuesChanged(); }
    // Where a value lies in the range, 0 to 1.
    double toPosition(double value) const;

private:
    CError onMinMaxUpdate(const CAttrMap& parameters);
    CError onContentReady(const CAttrMap& parameters);
    Channel convert(const CLevelMeterListener::Channel& heard) const;
    double toShown(double linear, bool& outIsSilent) const;
    CString format(double value, bool isSilent) const;
    CError publish();
    CError publishSums();

    std::vector<CLevelMeterListener*> listeners_;
    std::vector<Channel> channels_;
    const CMinMax* minMax_ = nullptr;
    CValueList* outList_ = nullptr;

    // Bound attributes.
    CString minMaxPath_;
    CString outListPath_;
    CString outFormat_;
    bool isInverted_ = false;
    bool isRawData_ = false;
    bool isExportPeaks_ = false;
};

} // namespace qel
