// The parameter that shows which preset is in force.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamListener.h"
#include "CAudioParamSubtree.h"

namespace qel {

// A part of a registry. Writes titles of presets into the parameter, and "User" where somebody has changed by
// hand what a preset had set. Any thread but the audio thread; takes the locks of parameters.
class CAudioPresetNameParam
{
public:
    // Before anything else. `name` is the parameter's full name; an empty one makes all else do nothing.
    void setUp(CAudioParamCollector& collector, const CString& name);

    bool isThere() const { return !name_.isEmpty(); }
    bool is(const CAudioParam& param) const { return param.getName() == name_; }

    // Shows a title in the groups from `first` to `last`.
    void show(const CString& title, std::int32_t first, std::int32_t last, CAudioParamContext& context);
    // Marks the groups of a change as the user's own, unless the change came from a preset.
    void markAsUser(const CAudioParamNotice& notice);

private:
    CAudioParam& param() const { return collector_->getParam(name_); }

    CAudioParamCollector* collector_ = nullptr;
    CString name_;
};

} // namespace qel
