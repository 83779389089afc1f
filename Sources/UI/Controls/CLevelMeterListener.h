// What a meter hears of the audio side.
#pragma once

#include "CVizExchange.h"

namespace qel {

class CDynamicList;
class CLevelMeterBase;

// Tag `ui:level-meter-listener`, a child of its meter. Keeps the newest level of each channel.
//
//     viz-name               name of the meter in the audio graph
//     viz-exchange           path of the exchange, "ui.viz-exchange" by default
//     inactive-timeout       seconds without data after which a channel counts as inactive, 0.25 by default;
//                            below 0.01 never
//     interval               seconds between two updates of the meter, by the timer "update-timer"; 0
//                            (default) for one in each round of the exchange
//     audio-channels-list    path of a list whose items' values are the channels to show, in this order;
//                            without it all that there are data of
class CLevelMeterListener : public CObject, public CVizListener
{
public:
    struct Channel
    {
        std::int32_t element = 0;
        double level = 0.0; // linear
        double peak = 0.0;
        double dataSec = 0.0; // of the last data, by the clock of frames
        bool isActive = false;
    };

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;
    void release() override;

    const std::vector<Channel>& getChannels() const { return channels_; }

    // --- for the exchange
    void onVizData(const CAudioVizData& data) override;
    void onVizTick() override;
    void onVizClear() override;
    void onVizGone() override { exchange_ = nullptr; }

private:
    CError onListChanged(const CAttrMap& parameters);
    CError onUpdateTimer(const CAttrMap& parameters);
    CError readChannels();
    CError startTimer();
    Channel* findChannel(std::int32_t element);
    void update();

    CLevelMeterBase* meter_ = nullptr;
    CVizExchange* exchange_ = nullptr;
    CDynamicList* list_ = nullptr;
    std::vector<Channel> channels_;
    bool isChanged_ = false;
    bool hasTimer_ = false;

    // Bound attributes.
    CString vizName_;
    CString exchangePath_;
    CString listPath_;
    double timeoutSec_ = 0.0;
    double intervalSec_ = 0.0;
};

} // namespace qel
