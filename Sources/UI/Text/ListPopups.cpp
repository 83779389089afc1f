// The pop-ups that a list is in and opens.
#include "ListPopups.h"

#include "CViewWindow.h"

namespace qel {

namespace {

constexpr const char* kResult = "popup-result";
constexpr const char* kSource = "source";
constexpr const char* kListTemplate = "ui:window-app-popup-list";

} // namespace

bool isInPopup(const CView& view)
{
    return view.getRootView().getAttrBool("is-popup-window");
}

CError closeOwnPopup(CView& view)
{
    CViewWindow* const window = view.getWindow();
    return window && isInPopup(view) ? window->closeWindow() : CError();
}

CError deliverPopupResult(CView& view, CAttrMap parameters)
{
    const CObject::CHold hold(view);
    const CString path = view.getAttrString("result-target");
    if (path.isEmpty()) {
        parameters.erase(kSource);
        QEL_TRY(view.fireEvent(kResult, parameters), view.getFullName());
        CViewWindow* const window = view.isReleased() ? nullptr : view.getWindow();
        return window ? window->passPopupResult(view, parameters) : CError();
    }
    CObject* target = view.findObject(path);
    if (const CString attribute = view.getAttrString("result-target-redirect-attr");
        target && !attribute.isEmpty()) {
        const CString redirect = target->getAttrString(attribute);
        target = redirect.isEmpty() ? target : target->findObject(redirect);
    }
    if (!target) {
        QEL_FAIL(view.getFullName(),
                 "@qelstr_CTextView_deliverResult_NoTarget Unable to find result target '%1'.", path);
    }
    parameters[kSource] = CAttrValue(view.getFullName());
    if (const CString attribute = view.getAttrString("result-target-index-attr"); !attribute.isEmpty()) {
        QEL_TRY(target->setAttribute(attribute, parameters.at("index"), true), view.getFullName());
    }
    // A view that gets the result closes the pop-up with it; others know nothing of windows.
    const bool isView = dynamic_cast<CView*>(target) != nullptr;
    QEL_TRY(sendEvent(*target, kResult, parameters), view.getFullName());
    return isView || view.isReleased() ? CError() : closeOwnPopup(view);
}

CError openSubList(CView& view, const CString& source, const CDynamicListItem& item, std::int32_t index,
                   double rowY)
{
    const CString opener = view.getAttrString("original-opener");
    const CAttrMap parameters{
        {"tag", CAttrValue(kListTemplate)},
        {"window-alignment", CAttrValue("right")},
        {"is-popup-toggle-always-create", CAttrValue(true)},
        {"shift-x", CAttrValue(view.getAttrReal("popup-shift-x"))},
        {"shift-y", CAttrValue(rowY / view.getInterfaceScale() + view.getAttrReal("popup-shift-y"))},
        {"popup-item-list", CAttrValue(source)},
        {"popup-dynamic-list-parent-id", CAttrValue(item.subListId)},
        {"popup-dynamic-list-parent-item", CAttrValue(index)},
        {"popup-selected-paragraph", CAttrValue(-1)},
        {"popup-original-opener", CAttrValue(opener.isEmpty() ? view.getFullName() : opener)},
    };
    return view.eventPopupToggle(parameters);
}

} // namespace qel
