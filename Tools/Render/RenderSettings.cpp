// What the user wants done.
#include "Render/RenderSettings.h"

#include "Render/CParameterSetter.h"
#include "Render/DisplayNumber.h"
#include "Render/GuestState.h"
#include "Render/RenderError.h"

namespace qel::tools {

int findPreset(CGuestPlugin& guest, const std::string& nameOrNumber)
{
    std::vector<int> beginnings;
    for (int i = 0; i < guest.programCount(); ++i) {
        const std::string name = guest.programName(i);
        if (equalsIgnoringCase(name, nameOrNumber)) {
            return i;
        }
        if (startsIgnoringCase(name, nameOrNumber)) {
            beginnings.push_back(i);
        }
    }
    const std::optional<int> number = parseIndex(nameOrNumber);
    if (number && *number < guest.programCount()) {
        return *number;
    }
    if (beginnings.size() == 1) {
        return beginnings.front();
    }
    throw CRenderError(CExitCode::kSetting,
                       (beginnings.empty() ? "There is no preset '" : "More than one preset begins with '") +
                           nameOrNumber + "'; --list-presets shows them");
}

void configureGuest(CGuestPlugin& guest, const CRenderSettings& settings)
{
    for (const std::filesystem::path& path : settings.stateFiles) {
        loadState(guest, path);
    }
    if (!settings.preset.empty()) {
        guest.setProgram(findPreset(guest, settings.preset));
    }
    CParameterSetter setter(guest);
    for (const std::string& assignment : settings.assignments) {
        setter.set(assignment);
    }
}

CGuestPlugin::Setup guestSetup(const CRenderSettings& settings, double rateHz)
{
    return {rateHz, settings.blockSize, settings.isDouble};
}

} // namespace qel::tools
