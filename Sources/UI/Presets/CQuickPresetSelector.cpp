// The button that shows the present preset and opens the list of all.
#include "CQuickPresetSelector.h"

#include "CAudioInterfaceClient.h"
#include "CDynamicListPresets.h"
#include "CUIParam.h"
#include "EventParameters.h"
#include "LiteralText.h"
#include "ViewEvents.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kItemList = "item-list";
constexpr const char* kHistoryMoved = "history-change";
constexpr const char* kIsChanged = "is-changed";

bool isListed(const CString& names, const CString& name)
{
    const std::vector<CString> all = names.split(u';');
    return std::ranges::find(all, name) != all.end();
}

bool beginsListed(const CString& beginnings, const CString& name)
{
    return std::ranges::any_of(beginnings.split(u';'), [&](const CString& beginning) {
        return !beginning.isEmpty() && name.substring(0, beginning.length()) == beginning;
    });
}

} // namespace

void CQuickPresetSelector::buildClassInfo(CClassInfo& info)
{
    using Self = CQuickPresetSelector;
    CButton::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::registry_>("param-registry", "");
    info.bind<&Self::storeName_>("store-name", "");
    info.bind<&Self::userStoreName_>("store-name-user", "");
    info.bind<&Self::isGlobalData_>("is-global-data", false);
    info.bind<&Self::forcedTitle_, &Self::updateTitle>("forced-title", std::nullopt);
    info.bind<&Self::forcedTitleFilter_, &Self::updateTitle>("forced-title-filter", "");
    info.bind<&Self::presetListPath_>("preset-list", "");
    info.bind<&Self::userListPath_>("preset-list-user", "");
    info.bind<&Self::titleParam_>("ui-param-title", "ui-param-title");
    info.bind<&Self::settlingSteps_>("settling-steps", "");
    info.bind<&Self::silentSteps_>("silent-steps", "");
    info.handleEvent<&Self::eventHistoryChange>(kHistoryMoved);
}

CError CQuickPresetSelector::init()
{
    QEL_TRY(CButton::init(), getFullName());
    QEL_TRY(setAttribute("selector-full-name", getFullName(), true), getFullName());
    return {};
}

CError CQuickPresetSelector::initChilds()
{
    QEL_TRY(CButton::initChilds(), getFullName());
    const bool isNameShown = !forcedTitle_ || !forcedTitleFilter_.isEmpty();
    if (isNameShown && !name_) {
        QEL_FAIL(getFullName(), "@qelstr_CQuickPresetSelector_initChilds_NoNameParam No 'name' audio "
                                "parameter.");
    }
    QEL_TRY(findList(presetListPath_, storeName_, "preset-list", presetListName_), getFullName());
    if (!userListPath_.isEmpty() || !userStoreName_.isEmpty()) {
        QEL_TRY(findList(userListPath_, userStoreName_, "preset-list-user", userListName_), getFullName());
    }
    QEL_TRY(setAttribute(kItemList, presetListName_, true), getFullName());
    QEL_TRY(followHistory(), getFullName());
    return updateTitle();
}

CError CQuickPresetSelector::findList(const CString& path, const CString& storeName, const char* name,
                                      CString& out)
{
    CDynamicListPresets* list = nullptr;
    if (path.isEmpty()) {
        const CAttrMap attributes{{"interface-client", CAttrValue(clientPath_)},
                                  {"param-registry", CAttrValue(registry_)},
                                  {"store-name", CAttrValue(storeName)},
                                  {"is-global-data", CAttrValue(isGlobalData_)}};
        QEL_TRY(createChild(list, "ui:dynamic-list-presets", name, false, nullptr, &attributes),
                getFullName());
    } else {
        QEL_TRY(require(list, path,
                        "@qelstr_CQuickPresetSelector_initChilds_NoPresetList No preset list '%1' found."),
                getFullName());
    }
    out = list->getFullName();
    return {};
}

// --- choosing

CError CQuickPresetSelector::onClick(const CAttrMap& parameters)
{
    const bool isUser = !userListName_.isEmpty() && eventText(parameters, "button") == "r";
    QEL_TRY(setAttribute(kItemList, isUser ? userListName_ : presetListName_, true), getFullName());
    return CButton::onClick(parameters);
}

CError CQuickPresetSelector::eventPopupResult(const CAttrMap& parameters)
{
    const CHold hold(*this);
    const CString list = eventText(parameters, "list-id");
    const auto index = eventIndex(parameters);
    CError first = setAttribute("selected-list", list, true);
    collectError(first, setAttribute("selected-index", CAttrValue(index), true));
    auto* const presets = dynamic_cast<CDynamicListPresets*>(findObject(getAttrString(kItemList)));
    collectError(first, presets ? presets->activate(list, index) : CError());
    return first;
}

// --- the name

bool CQuickPresetSelector::isTitleParam(const CUIParam& param) const
{
    return param.getName() == titleParam_;
}

CError CQuickPresetSelector::onParamAdded(CUIParam& param)
{
    if (!isTitleParam(param)) {
        return CButton::onParamAdded(param);
    }
    name_ = &param;
    return {};
}

CError CQuickPresetSelector::onParamRemoved(CUIParam& param)
{
    if (!isTitleParam(param)) {
        return CButton::onParamRemoved(param);
    }
    name_ = nullptr;
    return {};
}

CError CQuickPresetSelector::onParamUpdate(CUIParam& param)
{
    return isTitleParam(param) ? updateTitle() : CButton::onParamUpdate(param);
}

CError CQuickPresetSelector::updateTitle()
{
    const CString name = name_ ? name_->getText(0) : CString();
    const bool isForced =
        forcedTitle_ && (forcedTitleFilter_.isEmpty() || isListed(forcedTitleFilter_, name));
    if (!isForced && !name_) {
        return {};
    }
    // Marked in the list when it opens.
    QEL_TRY(setAttribute("selected-item", literalText(name), true), getFullName());
    return setAttribute("title", isForced ? *forcedTitle_ : literalText(name), true);
}

// --- changes

CError CQuickPresetSelector::followHistory()
{
    if (settlingSteps_.isEmpty()) {
        return {};
    }
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CQuickPresetSelector_initChilds_NoInterfaceClient No interfacing object '%1' "
                    "found."),
            getFullName());
    listenObject(clientPath_, "undo-history-changed", kHistoryMoved);
    client_->takeWaiting();
    return eventHistoryChange({});
}

CError CQuickPresetSelector::eventHistoryChange(const CAttrMap&)
{
    if (!client_) {
        return {};
    }
    const record::CHistoryState& state = client_->getHistory();
    auto step = std::min<std::ptrdiff_t>(state.position, std::ssize(state.steps) - 1);
    while (step > 0 && beginsListed(silentSteps_, state.steps[static_cast<std::size_t>(step)])) {
        --step;
    }
    // What everything begins with is as it was loaded.
    const bool isChanged = step > 0 && !isListed(settlingSteps_, state.steps[static_cast<std::size_t>(step)]);
    return isChanged == getAttrBool(kIsChanged) ? CError()
                                                : setAttribute(kIsChanged, CAttrValue(isChanged), true);
}

} // namespace qel
