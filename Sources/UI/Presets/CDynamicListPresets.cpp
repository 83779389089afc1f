// Banks and presets as lists to choose from.
#include "CDynamicListPresets.h"

#include "EventParameters.h"
#include "NumberSyntax.h"
#include "ViewEvents.h"

namespace qel {

namespace {

// Behind it stands the number of a bank.
constexpr const char* kBankList = "bank-";

} // namespace

void CDynamicListPresets::buildClassInfo(CClassInfo& info)
{
    using Self = CDynamicListPresets;
    CObject::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::registry_>("param-registry", "");
    info.bind<&Self::storeName_>("store-name", "");
    info.bind<&Self::isGlobalData_>("is-global-data", false);
    info.bind<&Self::isShowBanks_>("is-show-banks", true);
    info.bind<&Self::selectorPath_>("group-selector", "");
    info.handleEvent<&Self::onStoreUpdate>(CPresetLibrary::kStoreUpdate);
    info.handleEvent<&Self::onActivatePreset>("activate-preset");
}

CError CDynamicListPresets::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(library_.open(*this,
                          {.clientPath = clientPath_,
                           .registry = registry_,
                           .storeName = storeName_,
                           .isGlobal = isGlobalData_,
                           .selectorPath = selectorPath_,
                           .noClient = "@qelstr_CDynamicListPresets_init_NoInterfaceClient No interfacing "
                                       "object '%1' found.",
                           .noSelector = "@qelstr_CDynamicListPresets_init_NoGroupSelector No group selector "
                                         "object '%1' found."},
                          [this] { onLibraryChanged(); }),
            getFullName());
    return {};
}

void CDynamicListPresets::release()
{
    library_.close();
    CObject::release();
}

CError CDynamicListPresets::onStoreUpdate(const CAttrMap&)
{
    library_.onStoreChanged();
    return {};
}

void CDynamicListPresets::onLibraryChanged()
{
    const CHold hold(*this);
    traceError(notify("values-changed", {}, false));
    if (!isReleased()) {
        traceError(notify("dynamic-list-updated", {{"list-id", CAttrValue(CString())}}, false));
    }
}

bool CDynamicListPresets::startsWithBanks() const
{
    return isShowBanks_ && (library_.getState().isMaster || library_.getBanks().size() > 1);
}

CError CDynamicListPresets::findListBank(const CString& listId, std::int32_t& out) const
{
    if (listId.isEmpty()) {
        out = startsWithBanks() ? -1 : 0;
        return {};
    }
    const std::size_t prefix = std::string_view(kBankList).size();
    const auto bank = parseInteger(listId.substring(prefix));
    if (!listId.startsWith(kBankList) || !bank || !library_.findBank(*bank)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CDynamicListPresets_generateSubList_InvalidListId Invalid list identifier %1.",
                 listId);
    }
    out = *bank;
    return {};
}

CError CDynamicListPresets::getItems(const CString& listId, std::vector<CDynamicListItem>& out)
{
    out.clear();
    std::int32_t bank = -1;
    QEL_TRY(findListBank(listId, bank), getFullName());
    const std::int32_t current = library_.findCurrent(bank);
    const auto add = [&](const CString& text, const CString& subList) {
        const auto index = static_cast<std::int32_t>(out.size());
        out.push_back({.text = text, .subListId = subList, .value = index, .isMarked = index == current});
    };
    if (bank >= 0) {
        for (const CString& preset : library_.findBank(bank)->presets) {
            add(preset, {});
        }
        return {};
    }
    for (const CPresetLibrary::Bank& one : library_.getBanks()) {
        add(one.name, CString(kBankList) + CString::number(static_cast<std::int64_t>(out.size())));
    }
    return {};
}

CError CDynamicListPresets::activate(const CString& listId, std::int32_t index)
{
    std::int32_t bank = -1;
    QEL_TRY(findListBank(listId, bank), getFullName());
    return library_.activate(bank, index);
}

CError CDynamicListPresets::onActivatePreset(const CAttrMap& parameters)
{
    return activate(eventText(parameters, "list-id"), eventIndex(parameters));
}

} // namespace qel
