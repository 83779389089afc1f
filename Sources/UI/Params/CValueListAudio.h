// Texts that come from the audio side.
#pragma once

#include "CAudioInterfaceClient.h"
#include "CParamBridge.h"
#include "CUIParamUpdateHandler.h"
#include "CValueList.h"

namespace qel {

class CParamGroupSelector;

// Tag `ui:value-list`: what a list shows that follows a parameter, or names and routing of the channels.
//
//     mode                 manual                 as CValueList
//                          audio-param-values     the texts of a parameter's elements: those of the child
//                                                 `ui:ui-param`, if there is one, otherwise of the bridge
//                          audio-enum-value       the states that the parameter can take; an item's value is
//                                                 the parameter's
//                          audio-min-max          "value-count" texts in even steps of position, from one
//                                                 end to the other
//                          audio-ins, audio-outs  the host's channels
//                          audio-channels         internal channels, by number
//                          audio-groups           names of the groups
//                          audio-curgroup         name of the selected group
//                          audio-routing-labels   by "routing-label-mode"
//                          active-channels        internal channels that an input is routed to, by its label
//                          active-groups          names of the groups that such channels are assigned to
//     bridge               path, for the first three modes behind "manual"
//     interface-client     path, for the others; a bridge's own, where one is given
//     group-selector       path of a CParamGroupSelector; without it the first group counts
//     format               the text of an item, with %1 for what is stated above and %2 for the unit; "%1" by
//                          default
//     format-id            normal (default), automation-string (short names), knob-circle (as on a knob's
//                          scale)
//     value-count          of audio-min-max; 11 by default
//     min-value, max-value text of the ends of audio-min-max in place of the parameter's own
//     is-hide-reserve      states without a name of their own are left out
//     routing-label-mode   group (default)  labels of the inputs that are routed to the selected group
//                          inputs           for each internal channel the label of its input, "---" for none
//                          outputs          for each internal channel its output
//
// Follows what it shows. Until the audio side has answered, the list stays as it is.
class CValueListAudio : public CValueList,
                        public CUIParamUpdateHandler,
                        public CParamBridgeListener,
                        public CAudioInterfaceParamListener
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam&) override { return updateValues(); }
    CError onParamInfo(CUIParam&) override { return {}; }
    CError onBridgeValues() override;
    CError onBridgeInfo() override { return updateValues(); }
    void onBridgeGone() override { bridge_ = nullptr; }
    void onParamUpdate(const CString& param) override;

protected:
    CError collect(std::vector<CDynamicListItem>& out, bool& outIsReady) override;

private:
    using Items = std::vector<CDynamicListItem>;
    enum class Mode : std::int32_t;
    enum class RoutingLabels : std::int32_t;

    CError readMode();
    CError findSources();
    // Asks for the parameters that hold names and routing.
    void watch(std::initializer_list<const char*> params);
    CError onSourceChanged(const CAttrMap&) { return updateValues(); }

    bool needsClient() const;
    bool isLayoutKnown() const;
    std::int32_t currentGroup() const;
    // With the format applied.
    void add(Items& out, const CString& text, std::int32_t value, const CString& unit = {}) const;
    bool collectFromParam(Items& out) const;
    void collectParamValues(Items& out) const;
    void collectStates(Items& out) const;
    void collectScale(Items& out) const;
    void collectLayout(Items& out);
    void collectRouting(Items& out);
    bool hasInput(std::int32_t channel);

    Mode mode_{};
    RoutingLabels routingLabels_{};
    CAudioParamConverter::TextMode textMode_ = CAudioParamConverter::TextMode::kNormal;
    CParamBridge* bridge_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr;
    CParamGroupSelector* selector_ = nullptr;
    CUIParam* uiParam_ = nullptr;
    std::vector<const char*> watched_;

    // Bound attributes.
    CString modeName_;
    CString bridgePath_;
    CString clientPath_;
    CString selectorPath_;
    CString format_;
    CString formatId_;
    std::int32_t valueCount_ = 0;
    std::optional<CString> minValue_;
    std::optional<CString> maxValue_;
    bool isHideReserve_ = false;
    CString routingLabelMode_;
};

} // namespace qel
