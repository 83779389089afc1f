// Which MIDI controller moves which host parameter.
#pragma once

#include "CApplicationData.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <array>
#include <atomic>
#include <span>

namespace qel {

class CAudioExtParam;

// Tag audio:cctable; one per instance, owned by its tree. Follows the setting "ccmap" of the local store. An
// assignment is a controller number and the path of a CAudioExtParam as seen from here; the stored table is a
// count and that many pairs of both. A table that is missing or damaged leaves all controllers without one:
// it is the user's data and keeps nobody from working.
class CAudioCCTable : public CObject
{
public:
    static constexpr std::int32_t kControllers = 128;
    static constexpr const char* kStoreKey = "ccmap";

    static void buildClassInfo(CClassInfo& info);

    // The parameters may come later than the table; it reads its setting again when their list is complete.
    CError init() override;
    void release() override;
    // Handler of the event "ext-params-complete" of the list beside this.
    CError onExtParamsComplete(const CAttrMap& parameters);

    // Replaces all assignments by those of a stored table. On failure there are none.
    CError load(std::span<const std::uint8_t> table);

    // Any thread, no lock: the parameter of a controller, or null.
    CAudioExtParam* get(std::int32_t controller) const;

private:
    // Kind of the stored block: the list kind of the stores.
    static constexpr std::uint32_t kStoreKind = CApplicationData::kAttrList;

    void readStore();
    void onStoreChange(CBridge*, std::uintptr_t) { readStore(); }
    CError parse(std::span<const std::uint8_t> table, std::array<CAudioExtParam*, kControllers>& out);

    CCriticalSection lock_; // serialises changes of the table
    std::array<std::atomic<CAudioExtParam*>, kControllers> entries_{};
    CApplicationDataBridge<CAudioCCTable> storeBridge_{*this, &CAudioCCTable::onStoreChange};
};

} // namespace qel
