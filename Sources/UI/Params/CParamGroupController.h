// What is done to a whole group of channels.
#pragma once

#include "CAudioInterfaceClient.h"
#include "CObject.h"

namespace qel {

class CParamGroupSelector;

// Tag `ui:param-group-controller`.
//
//     interface-client   path of the client of the audio/UI interface
//     group-selector     path of the CParamGroupSelector whose group is meant
//     title              what the steps of the history call it: "Group" gives "Group (2) copy"
//     is-undo-disabled   no step of the history
//
// Acts on the parameters that its children name: each a core:object with "param", the full name, or with
// "bridge", the path of a CParamBridgeAudio. Parameters with one group for all are passed over. Each action
// is one step of the history.
//
//     copy-group    index: the group that becomes like the selected one, or like "source" if that is given
//     reset-group   index: the group that returns to the defaults; the selected one without it
//
// Raises "group-change" with "index" when the selected group changes, and for a group that it has changed.
class CParamGroupController : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;

    // Groups that do not exist, or a group onto itself, change nothing.
    CError copyGroup(std::int32_t from, std::int32_t to);
    CError resetGroup(std::int32_t group);

private:
    CError onCopyGroup(const CAttrMap& parameters);
    CError onResetGroup(const CAttrMap& parameters);
    CError onGroupChange(const CAttrMap& parameters);
    CError onGroupCount(const CAttrMap& parameters);

    bool isGroup(std::int32_t group) const;
    CString stepName(std::int32_t group, const char* action) const;
    CError tell(std::int32_t group);

    CAudioInterfaceClient* client_ = nullptr;
    CParamGroupSelector* selector_ = nullptr;
    std::vector<CString> params_;

    // Bound attributes.
    CString clientPath_;
    CString selectorPath_;
    CString title_;
    bool isUndoDisabled_ = false;
};

} // namespace qel
