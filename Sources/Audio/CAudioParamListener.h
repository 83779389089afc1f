// Hears of every change to a parameter of one instance.
#pragma once

#include "CAudioParamContext.h"
#include "CCheckedObject.h"

namespace qel {

class CAudioParamCollector;

// Attached to one collector at a time; destruction detaches, and the collector outlives the attachment.
// Notices come in the thread that wrote, outside the parameter's lock unless the writer held it, and not for
// writes whose context names this listener as their sender. A notice may be on its way while another thread
// detaches, so whoever ends a listener makes sure that nothing writes then, or lets it outlive the writers.
class CAudioParamListener : public CCheckedObject
{
public:
    CAudioParamListener() = default;
    CAudioParamListener(const CAudioParamListener&) = delete;
    CAudioParamListener& operator=(const CAudioParamListener&) = delete;
    ~CAudioParamListener() override { attach(nullptr); }

    // Begins to listen; null ends it.
    void attach(CAudioParamCollector* collector);

    virtual void onParamChange(const CAudioParamNotice& notice) = 0;

private:
    CAudioParamCollector* collector_ = nullptr;
};

} // namespace qel
