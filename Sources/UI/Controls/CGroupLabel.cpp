// The channels of the group that is shown.
#include "CGroupLabel.h"

#include "LiteralText.h"

namespace qel {

namespace {

constexpr const char* kLabelsChange = "*labels-change";
constexpr const char* kSeparator = ", ";
constexpr const char* kNoChannels = "No active channels";

} // namespace

void CGroupLabel::buildClassInfo(CClassInfo& info)
{
    using Self = CGroupLabel;
    CTextViewAutoScroll::buildClassInfo(info);
    info.bind<&Self::labels_>("audio-routing-labels", "ui.routing-labels");
    info.handleEvent<&Self::eventLabelsChange>(kLabelsChange);
}

CError CGroupLabel::init()
{
    QEL_TRY(CFramedText::init(), getFullName());
    if (!dynamic_cast<CDynamicList*>(findObject(labels_))) {
        QEL_FAIL(getFullName(), "@qelstr_CGroupLabel_init_NoLabels Unable to find audio routing labels.");
    }
    listenObject(labels_, "values-changed", kLabelsChange);
    return eventLabelsChange({});
}

CError CGroupLabel::eventLabelsChange(const CAttrMap&)
{
    auto* const list = dynamic_cast<CDynamicList*>(findObject(labels_));
    std::vector<CDynamicListItem> items;
    if (list) {
        QEL_TRY(list->getItems({}, items), getFullName());
    }
    CString text;
    for (const CDynamicListItem& item : items) {
        text += text.isEmpty() ? item.text : CString(kSeparator) + item.text;
    }
    return setTitle(text.isEmpty() ? CString(kNoChannels) : literalText(text));
}

} // namespace qel
