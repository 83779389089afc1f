// The lists and buttons of the window of presets.
#include "CPresetLists.h"

#include "CTextViewList.h"
#include "CValueList.h"
#include "EventParameters.h"
#include "ViewEvents.h"

#include <utility>

namespace qel {

namespace {

constexpr const char* kBank = "bank";
constexpr const char* kPreset = "preset";

struct ButtonLink
{
    const char* path;
    const char* event;
};

constexpr ButtonLink kButtons[] = {
    {"$bank-buttons-path.add", "bank-add"},
    {"$bank-buttons-path.delete", "bank-delete"},
    {"$bank-buttons-path.load", "bank-load"},
    {"$bank-buttons-path.save", "bank-save"},
    {"$preset-buttons-path.add", "preset-add"},
    {"$preset-buttons-path.delete", "preset-delete"},
    {"$preset-buttons-path.replace", "preset-replace"},
    {"$preset-buttons-path.load", "preset-load"},
    {"$preset-buttons-path.save", "preset-save"},
    {"$preset-buttons-path.activate", "preset-activate"},
    {"$preset-buttons-path.set-default", "preset-set-default"},
};

} // namespace

// --- links

CError CPresetLists::link()
{
    auto* const presets = dynamic_cast<CTextViewList*>(owner_.findObject("$preset-list-path"));
    if (!presets) {
        QEL_FAIL(owner_.getFullName(),
                 "@qelstr_CPresetManager_initChilds_NoPresetList No preset list view found.");
    }
    QEL_TRY(linkList(*presets, kPreset, presetItems_), owner_.getFullName());
    bankList_ = dynamic_cast<CTextViewList*>(owner_.findObject("$bank-list-path"));
    if (bankList_) {
        QEL_TRY(linkList(*bankList_, kBank, bankItems_), owner_.getFullName());
    }
    for (const ButtonLink& each : kButtons) {
        if (auto* button = dynamic_cast<CView*>(owner_.findObject(each.path))) {
            QEL_TRY(linkEvent(*button, "mouse-release", owner_, each.event), owner_.getFullName());
        }
    }
    presetList_ = presets;
    return {};
}

CError CPresetLists::linkList(CTextViewList& list, const char* kind, CValueList*& outItems)
{
    const CString owner = owner_.getFullName();
    const CString name = CString(kind) + CString("-items");
    QEL_TRY(owner_.createChild(outItems, "ui:value-list-manual", name), owner);
    QEL_TRY(list.setAttribute("text-source", outItems->getFullName(), true), owner);
    QEL_TRY(list.setAttribute("editbox-can-rename-event", CString(kind) + CString("-can-rename"), true),
            owner);
    QEL_TRY(list.setAttribute("editbox-can-rename-target", owner, true), owner);
    const CAttrMap which{{"list", CAttrValue(kind)}};
    for (const char* event :
         {"selected-paragraph-changed", "paragraph-text-changed", "paragraph-dbl-clicked"}) {
        QEL_TRY(linkEvent(list, event, owner_, event, which), owner);
    }
    return {};
}

void CPresetLists::release()
{
    presetList_ = bankList_ = nullptr;
}

bool CPresetLists::isOfBanks(const CAttrMap& parameters)
{
    return eventText(parameters, "list") == kBank;
}

std::int32_t CPresetLists::getSelected(const CAttrMap& parameters) const
{
    const CTextViewList* const list = isOfBanks(parameters) ? bankList_ : presetList_;
    return list ? list->getSelectedParagraph() : -1;
}

// --- what is shown

CError CPresetLists::show(const CPresetLibrary& library, const CPresetPlace& selected, bool hasStore)
{
    const bool wasShowing = std::exchange(isShowing_, true);
    CError first;
    if (bankItems_) {
        const bool isReadOnly = !library.canChangeBank(selected.bank);
        collectError(first, bankItems_->setValues(library.listNames()));
        collectError(first, bankList_->selectParagraph(selected.bank));
        collectError(first, bankList_->setAttribute("is-read-only", CAttrValue(isReadOnly), true));
    }
    const bool isReadOnly = !library.canChange(selected.bank);
    collectError(first, presetItems_->setValues(library.findBank(selected.bank)->presets,
                                                library.findCurrent(selected.bank)));
    collectError(first, presetList_->selectParagraph(selected.preset));
    collectError(first, presetList_->setAttribute("is-read-only", CAttrValue(isReadOnly), true));
    isShowing_ = wasShowing;
    collectError(first, showButtons(library, selected, hasStore));
    return first;
}

CError CPresetLists::setButton(const char* path, bool isEnabled)
{
    CObject* const button = owner_.findObject(path);
    return button ? setEnabled(*button, isEnabled) : CError();
}

CError CPresetLists::showButtons(const CPresetLibrary& library, const CPresetPlace& selected, bool hasStore)
{
    const bool hasPreset = library.hasPreset(selected.bank, selected.preset);
    const bool canChange = library.canChange(selected.bank);
    // An instance has at least one program.
    const CPresetLibrary::Bank& bank = *library.findBank(selected.bank);
    const bool isLast = bank.kind == CPresetLibrary::Kind::kSession && bank.presets.size() == 1;
    const std::pair<const char*, bool> buttons[] = {
        {"$bank-buttons-path.add", hasStore},
        {"$bank-buttons-path.load", hasStore},
        {"$bank-buttons-path.delete", library.canChangeBank(selected.bank)},
        {"$preset-buttons-path.add", canChange},
        {"$preset-buttons-path.load", canChange},
        {"$preset-buttons-path.delete", canChange && hasPreset && !isLast},
        {"$preset-buttons-path.replace", canChange && hasPreset},
        {"$preset-buttons-path.save", hasPreset},
        {"$preset-buttons-path.activate", hasPreset},
        {"$preset-buttons-path.set-default", hasPreset && library.getState().isMaster},
    };
    CError first;
    for (const auto& [path, isEnabled] : buttons) {
        collectError(first, setButton(path, isEnabled));
    }
    return first;
}

} // namespace qel
