// Presets that the user has stored for all instances.
#include "PresetStores.h"

#include "CApplication.h"
#include "Streams/CMemoryReader.h"

namespace qel {

namespace {

constexpr const char* kDefaultPresetKey = "default-preset"; // a preset body

} // namespace

bool loadStoredDefault(const CString& id, CAudioPreset& out)
{
    CByteBuffer body;
    if (CApplication* application = CApplication::get()) {
        application->getLocalData().loadAppData(kDefaultPresetKey, body, CAudioPreset::kChunkId);
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

void loadStoredList(const CString& storeName, CAudioPresetBank& out)
{
    CApplication* application = CApplication::get();
    if (!application || storeName.isEmpty()) {
        return;
    }
    const bool isGlobal = storeName.startsWith("/");
    CApplicationData& store = isGlobal ? application->getGlobalData() : application->getLocalData();
    CByteBuffer body;
    store.loadAppData(isGlobal ? storeName.substring(1) : storeName, body, CAudioPresetBank::kListChunkId);
    if (body.isEmpty()) {
        return;
    }
    CMemoryReader reader(body.bytes());
    if (CError error = out.loadList(reader)) {
        traceError(error);
    }
}

} // namespace qel
