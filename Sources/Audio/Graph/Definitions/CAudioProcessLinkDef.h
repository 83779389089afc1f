// Definition of a link between two processes of a compound.
#pragma once

#include "CObject.h"

#include <limits>
#include <optional>

namespace qel {

class CAudioProcessDef;

// One end of a link: a port of a child process, or of the compound itself.
struct CAudioPortRef
{
    CString name;        // of the child process, without a leading dot; "*" for the compound
    bool isSelf = false; // the compound's own input, as a source, or output, as a destination
    std::int32_t port = 0;
};

// Tag audio:process-link. The attributes src and dst have the form "name", "name/port", "*" or "*/port"; the
// name may have a dot in front. Stands among the children of a CAudioProcessDef and is read by the processes
// made of it; does not change once initialised, so any thread may ask it.
//
// init checks all that can be known without the other children. The compound has the names checked once it
// has all its children, because a link may stand in front of the processes that it joins.
class CAudioProcessLinkDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    // Fails if an end names no child process of `compound`.
    CError checkNames(const CAudioProcessDef& compound) const;

    const CAudioPortRef& source() const { return source_; }
    const CAudioPortRef& destination() const { return destination_; }
    // Not active while this state of the compound is active; -1: always active.
    std::int32_t bypassStateId() const { return bypassStateId_; }

private:
    static constexpr std::int32_t kNotGiven = std::numeric_limits<std::int32_t>::min();

    CError readState();

    std::optional<CString> src_;
    std::optional<CString> dst_;
    std::int32_t stateId_ = kNotGiven;
    std::int32_t fullStateId_ = kNotGiven;
    CAudioPortRef source_;
    CAudioPortRef destination_;
    std::int32_t bypassStateId_ = -1;
};

} // namespace qel
