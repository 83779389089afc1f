// The states of a view.
#pragma once

#include "CStateMotion.h"
#include "CTickSource.h"
#include "CViewBasePlacement.h"
#include "CViewContext.h"

#include <array>

namespace qel {

class CViewState;

// A view has a list of active states, in the order in which they were set. Its children of tag
// "ui:view-state" say which attributes a state overrides; a name without such a child is a state all the
// same, which commands can ask for. While a state overrides an attribute, whoever sets the attribute sets
// what lies below the state, and sees it when the state has gone.
//
//     duration          seconds that "opacity", "width" and "height" take to a new number
//     morph-duration    seconds that a change of "color-state" or "image-set-range" fades over
//     color-state       the variant of all colours: "Hover", "ActiveHover"
//     image-set-range   the range of images
//
// An active state overrides both durations, too. A "color-state" of a state is appended to what was there,
// and "/Hover" takes the place of it. Any other value takes the place of what was there; where it holds
// "{}", that is put in; with a "/" in front, the value is taken as it stands behind the "/".
//
// Setting an attribute "color-state" or "image-set-range" directly does not fade. When a change of states has
// come to its end, also one that took no time, the event "state-ready" fires with the next frame.
class CViewBaseState : public CViewBasePlacement
{
public:
    CViewBaseState();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;
    bool divertAttribute(const CString& key, const CAttrValue& value, CError& outError) override;

    // --- states

    // Adds a state to the list, or takes it out; nothing happens if it is there, or is not. The changes take
    // their durations, or no time.
    CError setState(const CString& name, bool isImmediate = false);
    CError unsetState(const CString& name, bool isImmediate = false);
    CError toggleState(const CString& name);
    bool isStateActive(const CString& name) const;
    // True while a morph or a fade runs, or "state-ready" has still to be fired.
    bool isStateMoving() const { return tick_.isRunning(); }

    // Events "set-state" and "unset-state", parameter "state".
    virtual CError eventSetState(const CAttrMap& parameters);
    virtual CError eventUnsetState(const CAttrMap& parameters);
    // At each frame while states move.
    virtual void eventStateReady();

    // Runs what the tree has for the event.
    virtual CError fireEvent(const CString& name, const CAttrMap& parameters) = 0;

    // --- for state objects
    CError addState(CViewState& state);
    CError removeState(CViewState& state);
    // The attributes of a state have changed.
    CError onStateChanged(const CViewState& state);

    // --- the window; from init on. A view outlives its release only with a null window.
    CViewContext& getViewContext() const { return *viewContext_; }
    // Null without a window.
    CViewWindow* getWindow() const { return viewContext_ ? viewContext_->getWindow() : nullptr; }

protected:
    const CStateFade& getFade() const { return fade_; }
    // The view looks different and is to be repainted.
    virtual void markLook() {}
    // The two looks of the fade have changed.
    virtual void onLookChanged() {}
    // Where the fade is has changed.
    virtual void onFadeMoved() {}

private:
    using Value = std::optional<CAttrValue>; // none: the attribute is missing

    // An attribute that active states override, or that is on its way back.
    struct Override
    {
        Value base;
        bool isWanted = false; // by an active state
    };
    struct Gathered
    {
        CStringMap<Value> values;
        double durationSec = 0.0;
        double fadeDurationSec = 0.0;
    };
    // The attributes that morph.
    static constexpr std::size_t kMorphs = 3;

    CError attrLook();
    CError applyStates(bool isImmediate);
    void gather(Gathered& gathered);
    void gatherState(const CViewState& state, Gathered& gathered);
    CError adopt(const Gathered& gathered, std::int32_t round);
    CError adoptNumber(std::size_t index, const Value& value, double durationSec);
    CError adoptLook(const Gathered& gathered, std::int32_t round);
    // Writes the attribute if it differs, past what diverts others.
    CError write(const CString& key, const Value& value);
    void changeLook(double durationSec);
    void forgetRestored();
    bool isMorphing(const CString& key) const;
    bool isOutdated(std::int32_t round) const { return isReleased() || round != round_; }

    std::shared_ptr<CViewContext> viewContext_;
    CStringMap<std::vector<CViewState*>> states_; // by state name, each list in the order of the tree
    std::vector<CString> activeStates_;
    CStringMap<Override> overrides_;
    std::array<CStateMorph, kMorphs> morphs_;
    CStateFade fade_;
    CTickSubscription tick_;
    const CString* ownWrite_ = nullptr; // the attribute that is being written from here
    std::int32_t round_ = 0;            // of applyStates(): handlers may begin another one
    bool isLookHeld_ = false;           // both of its attributes are being set

    // Bound attributes.
    double durationSec_ = 0.0;
    double fadeDurationSec_ = 0.0;
    CString colorState_;
    CString imageRange_;
};

} // namespace qel
