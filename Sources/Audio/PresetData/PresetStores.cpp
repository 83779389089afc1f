// Presets that the user has stored for all instances.
#include "PresetStores.h"

#include "CApplication.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

namespace qel {

namespace {

// Version of a list body that holds banks: u32 version, u32 count, the bank bodies.
constexpr std::int32_t kBanksVersion = 2;

CError readBanks(const CByteBuffer& body, std::vector<CAudioPresetBank>& out)
{
    CMemoryReader reader(body.bytes());
    std::int32_t version = 0;
    QEL_TRY(reader.readI32(version), {});
    if (version != kBanksVersion) {
        CMemoryReader listReader(body.bytes());
        CAudioPresetBank bank;
        QEL_TRY(bank.loadList(listReader), {});
        out.push_back(std::move(bank));
        return {};
    }
    std::int32_t count = 0;
    QEL_TRY(reader.readI32(count), {});
    // A false count ends at the end of the data.
    for (std::int32_t i = 0; i < count; ++i) {
        CAudioPresetBank bank;
        QEL_TRY(bank.load(reader), {});
        out.push_back(std::move(bank));
    }
    return {};
}

} // namespace

CApplicationData* findListStore(const CString& storeName, CString& outSetting)
{
    CApplication* const application = CApplication::get();
    if (!application || storeName.isEmpty()) {
        return nullptr;
    }
    const bool isGlobal = storeName.startsWith("/");
    outSetting = isGlobal ? storeName.substring(1) : storeName;
    return isGlobal ? static_cast<CApplicationData*>(&application->getGlobalData())
                    : &application->getLocalData();
}

bool loadStoredDefault(const CString& id, CAudioPreset& out)
{
    CByteBuffer body;
    if (CApplication* application = CApplication::get()) {
        application->getLocalData().loadAppData(kDefaultPresetSetting, body, CAudioPreset::kChunkId);
    }
    if (body.isEmpty()) {
        return false;
    }
    CMemoryReader reader(body.bytes());
    CAudioPreset preset;
    if (CError error = preset.load(reader)) {
        traceError(error);
        return false;
    }
    if (preset.getId() != id) {
        return false;
    }
    out = std::move(preset);
    return true;
}

CError saveStoredDefault(const CAudioPreset& preset)
{
    CApplication* const application = CApplication::get();
    if (!application) {
        return {};
    }
    CMemoryWriteBuffer stream;
    QEL_TRY(preset.save(stream), preset.getName());
    CByteBuffer body;
    stream.copyTo(body);
    return application->getLocalData().saveAppData(kDefaultPresetSetting, body, nullptr,
                                                   CAudioPreset::kChunkId);
}

void loadStoredList(const CString& storeName, CAudioPresetBank& out)
{
    std::vector<CAudioPresetBank> banks;
    loadStoredBanks(storeName, banks);
    if (!banks.empty()) {
        out = std::move(banks.front());
    }
}

void loadStoredBanks(const CString& storeName, std::vector<CAudioPresetBank>& out)
{
    out.clear();
    CString setting;
    CByteBuffer body;
    if (CApplicationData* store = findListStore(storeName, setting)) {
        store->loadAppData(setting, body, CAudioPresetBank::kListChunkId);
    }
    if (body.isEmpty()) {
        return;
    }
    if (CError error = readBanks(body, out)) {
        traceError(error);
        out.clear();
    }
}

CError saveStoredBanks(const CString& storeName, const std::vector<CAudioPresetBank>& banks, CBridge* sender)
{
    CString setting;
    CApplicationData* const store = findListStore(storeName, setting);
    if (!store) {
        return {};
    }
    CMemoryWriteBuffer stream;
    if (banks.size() == 1) {
        QEL_TRY(banks.front().saveList(stream), setting);
    } else {
        QEL_TRY(stream.writeI32(kBanksVersion), setting);
        QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(banks.size())), setting);
        for (const CAudioPresetBank& bank : banks) {
            QEL_TRY(bank.save(stream), setting);
        }
    }
    CByteBuffer body;
    stream.copyTo(body);
    return store->saveAppData(setting, body, sender, CAudioPresetBank::kListChunkId);
}

} // namespace qel
