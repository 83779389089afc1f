// Which MIDI controller moves which host parameter.
#include "CAudioCCTable.h"

#include "CApplication.h"
#include "CAudioExtParam.h"
#include "CAudioExtParamList.h"
#include "Streams/CMemoryReader.h"

namespace qel {

void CAudioCCTable::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.handleEvent<&CAudioCCTable::onExtParamsComplete>(CAudioExtParamList::kCompleteEvent);
}

CError CAudioCCTable::onExtParamsComplete(const CAttrMap&)
{
    readStore();
    return {};
}

CError CAudioCCTable::init()
{
    QEL_TRY(CObject::init(), getFullName());
    listenObject("^ext-param-list", CAudioExtParamList::kCompleteEvent, CAudioExtParamList::kCompleteEvent);
    if (CApplication* application = CApplication::get()) {
        storeBridge_.attachSetting(application->getLocalData(), kStoreKey);
    }
    readStore();
    return {};
}

void CAudioCCTable::release()
{
    storeBridge_.detach();
    CObject::release();
}

void CAudioCCTable::readStore()
{
    if (CApplication* application = CApplication::get()) {
        CByteBuffer table;
        application->getLocalData().loadAppData(kStoreKey, table, kStoreKind);
        traceError(load(table.bytes()));
    }
}

CError CAudioCCTable::load(std::span<const std::uint8_t> table)
{
    std::array<CAudioExtParam*, kControllers> entries{};
    CError error = table.empty() ? CError() : parse(table, entries);
    if (error) {
        entries.fill(nullptr);
    }
    const CLock lock(lock_);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries_[i].store(entries[i], std::memory_order_release);
    }
    return error;
}

CError CAudioCCTable::parse(std::span<const std::uint8_t> table,
                            std::array<CAudioExtParam*, kControllers>& out)
{
    CMemoryReader reader(table);
    std::uint32_t count = 0;
    QEL_TRY(reader.readU32(count), getFullName());
    for (std::uint32_t i = 0; i < count; ++i) {
        std::int32_t controller = 0;
        CString path;
        QEL_TRY(reader.readI32(controller), getFullName());
        QEL_TRY(reader.readString(path), getFullName());
        if (controller >= 0 && controller < kControllers) {
            out[static_cast<std::size_t>(controller)] = dynamic_cast<CAudioExtParam*>(findObject(path));
        }
    }
    return {};
}

CAudioExtParam* CAudioCCTable::get(std::int32_t controller) const
{
    return controller >= 0 && controller < kControllers
               ? entries_[static_cast<std::size_t>(controller)].load(std::memory_order_acquire)
               : nullptr;
}

} // namespace qel
