// The parameters that the host sees.
#pragma once

#include "CAudioExtParam.h"

#include <vector>

namespace qel {

// Tag audio:ext-param-list; one per instance, owned by its tree. Its CAudioExtParam children, in the order of
// the tree, are the host's parameters; their place is the host's index. The array changes only while children
// are added and removed, so any thread may read it once the tree stands.
class CAudioExtParamList : public CObject
{
public:
    // Raised in the list's name when all its parameters are there.
    static constexpr const char* kCompleteEvent = "ext-params-complete";

    static void buildClassInfo(CClassInfo& info) { CObject::buildClassInfo(info); }

    CError initChilds() override;
    CError onChildAdded(CObject& child) override;
    void onChildRemoved(CObject& child) override;

    // Who hears of changes; null for nobody. Set while nothing changes parameters.
    void setHostBridge(CAudioExtParamHostBridge* bridge);

    std::int32_t getCount() const { return static_cast<std::int32_t>(params_.size()); }
    // Null if there is none.
    CAudioExtParam* get(std::int32_t index) const;
    // The index of the parameter that projects this element, or -1.
    std::int32_t find(const CAudioParam& param, std::int32_t group, std::int32_t element) const;

    // --- audio thread: no locks, no allocation
    // At the start of each processing call, behind the collector's applyPending(): brings values that
    // CAudioExtParam::postNormalized() left to the processes.
    void applyPosted(double timeSec);

    // --- control threads
    // Takes over what no processing call has taken: before a state or a program is loaded over it.
    void takePosted();
    // Shows it in the parameters, without taking it from the next processing call: before a state is saved,
    // and by the UI's timer.
    void showPosted();
    // Takes over all values as they stand, after building.
    void refresh();

private:
    std::vector<CAudioExtParam*> params_;
};

} // namespace qel
