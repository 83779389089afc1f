// The scale around a knob.
#pragma once

#include "CPicture.h"

namespace qel {

class CDynamicList;
class CGlobalSettings;

// Tag `ui:knob-labels`, a child of a knob: a ring for a ground (CPicture, range "LabelBG") and the texts of a
// scale around it. Hidden until the event "show", which does nothing while the user's "show-knob-labels" is
// off; hidden again by "hide".
//
//     knob-label-count       how many texts, 10 by default, as many as the knob has ticks
//     zone-start, zone-end   the turn that they are spread over (CKnobZone); by default that of the knob
//     center-x, center-y     the middle of the ring; by default the knob's
//     label-radius           26.6 by default
//     label-width            of each text, 24 by default
//     font-name, text-color  of the texts, "shared::font.small" and "KnobLabelsText" by default
//
// The texts are those of a child list "scale" (CDynamicList). Without one, it is made for the parameter that
// the knob is bound to: even steps from end to end, in the short form for knobs. They get their views when
// they are first shown, since the scales of all knobs would be a quarter of a window's views; and anew, while
// they are shown, when the list raises "values-changed" and on the event "scale-values-change".
class CKnobLabels : public CPicture
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails without the global settings.
    CError init() override;
    // Fails where there is no scale, and none can be made.
    CError initChilds() override;

    virtual CError eventScaleValuesChange(const CAttrMap& parameters);

private:
    CError eventShow(const CAttrMap& parameters);
    CError eventHide(const CAttrMap& parameters);
    CError makeScale();
    CError findScale(CDynamicList*& outList);
    // Makes the labels, if there are others than the list asks for.
    CError update();
    CError makeLabel(const CString& text, double position);
    // The number of this attribute here or, without it, on the knob.
    double readNumber(const char* name, double fallback) const;

    const CGlobalSettings* settings_ = nullptr;
    std::vector<CString> texts_; // that there are labels for

    // Bound attributes.
    std::int32_t count_ = 10;
    double radius_ = 0.0;
    double labelWidth_ = 0.0;
    CString fontName_;
    CString textColor_;
};

} // namespace qel
