// A parameter as the host sees it: one number from 0 to 1.
#pragma once

#include "CAudioParam.h"
#include "CAudioParamConverter.h"
#include "CAudioParamListener.h"
#include "CAudioParamMailbox.h"
#include "CObject.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace qel {

class CAudioExtParamHostBridge;

// Tag audio:ext-param; a child of CAudioExtParamList, owned by the instance's tree. Projects one element of
// entry 0 of one group of a CAudioParam onto 0 to 1 and keeps the two in step: the host's values go to the
// parameter, every other change of the parameter goes to the host, and nothing comes back to where it began.
//
// Attributes: param-collector (path), param-name (full name), group, element-index, ext-name (short name, at
// most 7 characters).
class CAudioExtParam : public CObject
{
public:
    static constexpr std::size_t kMaxNameLength = 7;

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    // Both are set before the host asks for anything. A null bridge tells nobody.
    void setHostBridge(CAudioExtParamHostBridge* bridge, std::int32_t index);

    CAudioParam& getParam() const { return *param_; }
    const CString& getExtName() const { return extName_; }
    std::int32_t getGroup() const { return group_; }
    std::int32_t getElementIndex() const { return elementIndex_; }

    // --- any thread: waits for nobody

    double getNormalized() const;
    // Leaves a value of the host for the next applyPosted() or takePosted(); a later one replaces it. It can
    // be read back at once. NaN is ignored.
    void postNormalized(double norm);

    // --- control threads

    // Takes the parameter's value over without telling the host.
    void refresh() { refresh(false); }
    // A value of the host, written at once. `timeSec` counts from the start of the next processing call.
    void setNormalized(double norm, double timeSec = 0.0);
    // Writes what the audio thread has not taken so far, in its place: for what comes next and shall override
    // it.
    void takePosted();
    // The same for whoever reads the parameter: the audio thread still takes the value itself, so that its
    // order among the host's values stays.
    void showPosted();
    CString getDisplay(CAudioParamConverter::TextMode mode = CAudioParamConverter::TextMode::kNormal) const;
    CString getDisplayOf(double norm,
                         CAudioParamConverter::TextMode mode = CAudioParamConverter::TextMode::kNormal) const;
    // The position of what a user typed, or none if the text says nothing.
    std::optional<double> getNormalizedOf(const CString& text) const;
    CString getLabel() const;
    CString getVisualName() const;
    // From one state of an enumeration to the last; 0 for what has no states.
    std::int32_t getStepCount() const;

    // --- audio thread: no locks, no allocation

    // Brings the posted value to the processes. What cannot go this way yet stays posted.
    void applyPosted(double timeSec);

private:
    // What the host's numbers mean. Written once for each declaration of the parameter and then only read.
    struct Projection
    {
        std::shared_ptr<const CAudioParamInfo> info;
        const CAudioParamConverter* converter = nullptr;
        std::int32_t element = 0;
        CAudioParamCurve curve;
        double low = 0.0;
        double high = 0.0;
        std::int32_t stepCount = 0;
        bool isSingleNumber = false;

        Projection(std::shared_ptr<const CAudioParamInfo> declaration, std::int32_t ofElement);
        double valueOf(double norm) const;
        double normOf(double value) const { return curve.normOf(value); }
        bool isEnumeration() const;
        // Of an enumeration's state by its name; a converter takes states by number only.
        std::optional<double> normOfState(const CString& text) const;
    };
    class Listener : public CAudioParamListener
    {
    public:
        explicit Listener(CAudioExtParam& owner) : owner_(owner) {}
        ~Listener() override { endLink(); }
        void onParamChange(const CAudioParamNotice& notice) override { owner_.onParamChange(notice); }

    private:
        CAudioExtParam& owner_;
    };

    CError attrExtName();
    void onParamChange(const CAudioParamNotice& notice);
    bool isKnownToHost(const Projection& now, double norm) const;
    // Takes the parameter's value over; true if the number changed and the host does not know it. What the
    // audio side sends while a value of the host is under way is older, unless it is that value.
    bool refresh(bool isFromAudio);
    enum class EWrite
    {
        kSend, // to the audio side as well
        kShow  // what is posted, and stays so
    };
    void write(EWrite way, double norm, double timeSec);
    // Single numbers of group 0 have a short way to the slots, through the audio thread.
    bool goesByAudio(const Projection& projection) const { return group_ == 0 && projection.isSingleNumber; }
    // True if the host does not know the number.
    bool settleIfOvertaken();
    void refreshProjection();
    void tellHost();
    // The projection, or null as long as the parameter has no declaration to project with.
    const Projection* projection() const { return projection_.load(std::memory_order_acquire); }
    CString textOf(const Projection& projection, double value, CAudioParamConverter::TextMode mode) const;

    CString extName_;
    CString collectorPath_;
    CString paramName_;
    std::int32_t elementIndex_ = 0;
    std::int32_t group_ = 0;
    CAudioParam* param_ = nullptr;

    std::atomic<CAudioExtParamHostBridge*> bridge_{nullptr};
    std::int32_t index_ = -1;

    std::atomic<double> norm_{0.0}; // of the parameter
    // From the host to the parameter. Its latest number counts in place of the parameter's until it has come
    // there: while it is unsettled.
    CAudioParamMailbox posted_;
    std::uint32_t shownSequence_ = 0; // at the last showPosted(), under the parameter's lock

    std::atomic<const Projection*> projection_{nullptr};
    std::vector<std::unique_ptr<const Projection>> projections_; // under the parameter's lock

    Listener listener_{*this}; // last: it goes before all that a notice touches
};

} // namespace qel
