// Undo, redo, and the list of steps.
#include "CHistory.h"

#include "CValueList.h"
#include "EventParameters.h"
#include "LiteralText.h"
#include "ViewEvents.h"

namespace qel {

namespace {

constexpr const char* kHistoryChange = "history-change";

} // namespace

void CHistory::buildClassInfo(CClassInfo& info)
{
    using Self = CHistory;
    CView::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::stepHint_>("step-hint", "");
    info.handleEvent<&Self::onUndo>("undo-clicked");
    info.handleEvent<&Self::onRedo>("redo-clicked");
    info.handleEvent<&Self::onStepSelected>("step-selected");
    info.handleEvent<&Self::onHistoryChange>(kHistoryChange);
}

CError CHistory::init()
{
    QEL_TRY(CView::init(), getFullName());
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CHistory_init_NoInterfaceClient No interfacing object '%1' found."),
            getFullName());
    listenObject(clientPath_, "undo-history-changed", kHistoryChange);
    return {};
}

CError CHistory::initChilds()
{
    QEL_TRY(CView::initChilds(), getFullName());
    QEL_TRY(require(undo_, ".button-undo",
                    "@qelstr_CHistory_initChilds_NoUndoButton Unable to locate 'undo' button."),
            getFullName());
    QEL_TRY(require(redo_, ".button-redo",
                    "@qelstr_CHistory_initChilds_NoRedoButton Unable to locate 'redo' button."),
            getFullName());
    QEL_TRY(require(select_, ".button-select",
                    "@qelstr_CHistory_initChilds_NoSelectButton Unable to locate 'select' button."),
            getFullName());
    QEL_TRY(require(list_, ".history-list",
                    "@qelstr_CHistory_initChilds_NoHistoryList Unable to locate 'history list' container."),
            getFullName());
    QEL_TRY(linkEvent(*undo_, "mouse-release", *this, "undo-clicked"), getFullName());
    QEL_TRY(linkEvent(*redo_, "mouse-release", *this, "redo-clicked"), getFullName());
    QEL_TRY(linkEvent(*select_, "popup-result", *this, "step-selected"), getFullName());
    QEL_TRY(select_->setAttribute("item-list", list_->getFullName(), true), getFullName());
    client_->takeWaiting();
    return onHistoryChange({});
}

CError CHistory::onHistoryChange(const CAttrMap&)
{
    if (!list_) {
        return {};
    }
    const record::CHistoryState& state = client_->getHistory();
    const auto position = static_cast<std::size_t>(std::max(state.position, 0));
    const CString step = position < state.steps.size() ? literalText(state.steps[position]) : CString();
    CError first = list_->setValues(state.steps);
    collectError(first, setEnabled(*undo_, position > 0));
    collectError(first, setEnabled(*redo_, position + 1 < state.steps.size()));
    collectError(first, select_->setAttribute("title", step, true));
    collectError(first, stepHint_.isEmpty()
                            ? CError()
                            : select_->setAttribute("hint", formatMessage(stepHint_, {step}), true));
    // What the list marks when it opens.
    collectError(first, select_->setAttribute("index", CAttrValue(state.position), true));
    collectError(first, select_->setAttribute("selected-item", "", true));
    return first;
}

CError CHistory::moveTo(std::int32_t position)
{
    const auto count = static_cast<std::int32_t>(client_->getHistory().steps.size());
    return position >= 0 && position < count ? client_->send(record::CMoveHistory{position}) : CError();
}

CError CHistory::onUndo(const CAttrMap&)
{
    client_->takeWaiting();
    return moveTo(client_->getHistory().position - 1);
}

CError CHistory::onRedo(const CAttrMap&)
{
    client_->takeWaiting();
    return moveTo(client_->getHistory().position + 1);
}

CError CHistory::onStepSelected(const CAttrMap& parameters)
{
    return moveTo(eventIndex(parameters));
}

} // namespace qel
