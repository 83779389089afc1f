// The push button, the switch and the button that opens a list.
#include "CButton.h"

#include "CAudioParamInfo.h"
#include "CDynamicList.h"
#include "CUIParam.h"
#include "EventParameters.h"
#include "LiteralText.h"

namespace qel {

namespace {

constexpr const char* kPushed = "pushed";
constexpr const char* kActive = "active";
constexpr const char* kTempPushed = "temp-pushed";
constexpr const char* kIsActive = "is-active";
constexpr const char* kIndex = "index";
constexpr const char* kSelectedItem = "selected-item";
constexpr const char* kTitle = "title";
// The shared attribute under the name it is followed by here; no name a tree would use.
constexpr const char* kFollowed = "*shared";

constexpr const char* kOwnList = "value-list";
constexpr const char* kListWindow = "ui:window-app-popup-list";

} // namespace

void CButton::buildClassInfo(CClassInfo& info)
{
    using Self = CButton;
    CFramedView::buildClassInfo(info);
    info.bind<&Self::isPicture_, &Self::attrPicture>("is-picture", false);
    info.bind<&Self::imageIndex_, &Self::attrPicture>("image-set-index", 0);
    info.bind<&Self::pictureAlignmentH_, &Self::attrPicture>("pic-alignment-h", "center");
    info.bind<&Self::pictureAlignmentV_, &Self::attrPicture>("pic-alignment-v", "center");
    info.bind<&Self::isActive_, &Self::attrIsActive>(kIsActive, false);
    info.bind<&Self::isTempPushed_, &Self::attrIsTempPushed>("is-temp-pushed", false);
    info.bind<&Self::isInverse_>("is-inverse", false);
    info.bind<&Self::isRightClickAllowed_>("is-right-click-allowed", false);
    info.bind<&Self::isUndoDisabled_>("is-undo-disabled", false);
    info.bind<&Self::itemList_>("item-list", "");
    info.bind<&Self::sharedAttribute_>("shared-attribute", "");
    info.bind<&Self::attribute_>("attribute", "");
}

CError CButton::initChilds()
{
    QEL_TRY(CFramedView::initChilds(), getFullName());
    QEL_TRY(followShared(), getFullName());
    return {};
}

// --- pointer

CError CButton::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = press();
    collectError(first, CFramedView::onMousePress(parameters));
    return first;
}

CError CButton::onMousePressR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first;
    if (isRightClickAllowed_) {
        collectError(first, press());
    }
    collectError(first, CFramedView::onMousePressR(parameters));
    return first;
}

CError CButton::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = finish(parameters, true);
    collectError(first, CFramedView::onMouseRelease(parameters));
    return first;
}

CError CButton::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first;
    if (isRightClickAllowed_) {
        collectError(first, finish(parameters, true));
    }
    collectError(first, CFramedView::onMouseReleaseR(parameters));
    return first;
}

CError CButton::onMouseCancel(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = finish(parameters, false);
    collectError(first, CFramedView::onMouseCancel(parameters));
    return first;
}

CError CButton::onMouseCancelR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first;
    if (isRightClickAllowed_) {
        collectError(first, finish(parameters, false));
    }
    collectError(first, CFramedView::onMouseCancelR(parameters));
    return first;
}

CError CButton::onMouseEnter(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CFramedView::onMouseEnter(parameters);
    if (isHeld_) {
        collectError(first, setState(kPushed));
    }
    return first;
}

CError CButton::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = unsetState(kPushed);
    collectError(first, CFramedView::onMouseExit(parameters));
    return first;
}

CError CButton::press()
{
    if (actsDisabled()) {
        return {};
    }
    isHeld_ = true;
    return setState(kPushed);
}

CError CButton::finish(const CAttrMap& parameters, bool isClick)
{
    const bool isOwn = isHeld_ && isClick && !actsDisabled();
    isHeld_ = false;
    CError first = unsetState(kPushed);
    if (isOwn && !isReleased()) {
        collectError(first, onClick(parameters));
    }
    return first;
}

CError CButton::onClick(const CAttrMap& parameters)
{
    return itemList_.isEmpty() && !value_ ? toggle() : openList(parameters);
}

// --- what the button sets

CError CButton::toggle()
{
    const bool isOn = isActive_ == isInverse_; // that is: active from now on, in the sense of what is bound
    if (activity_) {
        return activity_->setValue(0, isOn ? 1.0 : 0.0);
    }
    return shared_.isThere() ? shared_.write(isOn ? "true" : "false") : CError();
}

CError CButton::showActive()
{
    return isActive_ ? setState(kActive) : unsetState(kActive);
}

CError CButton::attrIsTempPushed()
{
    return isTempPushed_ ? setState(kTempPushed) : unsetState(kTempPushed);
}

// --- the list

// The list of "item-list", or else all values that the parameter can have; null if there are none.
CError CButton::findList(CObject*& out)
{
    out = itemList_.isEmpty() ? findChild(kOwnList) : findObject(itemList_);
    if (!itemList_.isEmpty() && !dynamic_cast<CDynamicList*>(out)) {
        QEL_FAIL(getFullName(), "@qelstr_CButton_findList_NoList Unable to find item list '%1'.", itemList_);
    }
    const CAudioParamInfo* const info = value_ ? value_->getInfo() : nullptr;
    if (out || !info || info->isString()) {
        return {};
    }
    CAttrMap attributes;
    attributes["mode"] = CAttrValue("audio-enum-value");
    attributes["bridge"] = CAttrValue(value_->getBridge()->getFullName());
    attributes["is-hide-reserve"] = CAttrValue(true);
    return createChild(out, "ui:value-list", kOwnList, false, nullptr, &attributes);
}

CError CButton::openList(const CAttrMap& parameters)
{
    CObject* list = nullptr;
    QEL_TRY(findList(list), getFullName());
    if (!list) {
        return {};
    }
    std::vector<CDynamicListItem> items;
    QEL_TRY(dynamic_cast<CDynamicList&>(*list).getItems({}, items), getFullName());
    const CString shown = value_ ? value_->getText(0) : plainText(getAttrString(kSelectedItem));
    std::int32_t selected = getAttrInt(kIndex, -1);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i].text == shown) {
            selected = static_cast<std::int32_t>(i);
        }
    }
    CAttrMap sent = parameters;
    sent["tag"] = CAttrValue(kListWindow);
    sent["window-alignment"] = CAttrValue("bottom");
    sent["is-same-width"] = CAttrValue(true);
    sent["popup-item-list"] = CAttrValue(list->getFullName());
    sent["popup-selected-paragraph"] = CAttrValue(selected);
    for (const auto& [key, value] : getAttributes()) {
        if (key.startsWith("popup-") || key == "window-alignment" || key == "is-same-width") {
            sent[key] = value;
        }
    }
    return receiveEvent("popup-toggle", sent);
}

CError CButton::eventPopupResult(const CAttrMap& parameters)
{
    if (itemList_.isEmpty() && !value_) {
        return CFramedView::eventPopupResult(parameters);
    }
    const CHold hold(*this);
    const CString text = eventText(parameters, "text");
    const CString index = eventText(parameters, kIndex);
    CError first = setAttribute(kSelectedItem, literalText(text), true);
    collectError(first, setAttribute(kIndex, index, true));
    if (value_ && !isReleased()) {
        const CAudioParamInfo* const info = value_->getInfo();
        const double value = eventNumber(parameters, parameters.contains("value") ? "value" : kIndex);
        collectError(first, info && info->isString() ? value_->setText(0, text) : value_->setValue(0, value));
    }
    return first;
}

// --- what is bound

CError CButton::followShared()
{
    shared_ = findSharedTarget(*this, sharedAttribute_, attribute_);
    if (sharedAttribute_.isEmpty()) {
        return {};
    }
    if (!shared_.isThere()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CButton_initChilds_NoSharedAttribute Invalid button shared attribute '%1'.",
                 sharedAttribute_);
    }
    listenAttribute(*shared_.object, shared_.attribute, kFollowed);
    return onAttrChanged(*shared_.object, kFollowed, CAttrValue(shared_.read()));
}

CError CButton::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    if (key == kFollowed) {
        return setAttribute(kIsActive, CAttrValue(value.toBool().value_or(false) != isInverse_), true);
    }
    return CFramedView::onAttrChanged(sender, key, value);
}

CError CButton::onParamAdded(CUIParam& param)
{
    const CString name = param.getName();
    if (name == kActivityParam) {
        activity_ = &param;
    } else if (name == kValueParam) {
        value_ = &param;
    }
    param.setUndoDisabled(isUndoDisabled_);
    return {};
}

CError CButton::onParamRemoved(CUIParam& param)
{
    if (activity_ == &param) {
        activity_ = nullptr;
    }
    if (value_ == &param) {
        value_ = nullptr;
    }
    return {};
}

CError CButton::onParamUpdate(CUIParam& param)
{
    if (isReleased()) {
        return {};
    }
    if (activity_ == &param) {
        return setAttribute(kIsActive, CAttrValue(param.isActive() != isInverse_), true);
    }
    return value_ == &param ? setAttribute(kTitle, literalText(param.getText(0)), true) : CError();
}

CError CButton::onParamInfo(CUIParam& param)
{
    return onParamUpdate(param);
}

// --- look

void CButton::onLookChanged()
{
    CFramedView::onLookChanged();
    adoptPicture();
}

CError CButton::attrPicture()
{
    adoptPicture();
    return {};
}

// A picture is as large as its image where nobody says more.
void CButton::adoptPicture()
{
    if (getInitState() == InitState::kCreated || isReleased()) {
        return;
    }
    alignmentH_ = parseAlignment(pictureAlignmentH_, CAxis::kX).value_or(CAlignment::kCenter);
    alignmentV_ = parseAlignment(pictureAlignmentV_, CAxis::kY).value_or(CAlignment::kCenter);
    const CImage* const image =
        isPicture_ ? findImage(static_cast<std::uint32_t>(imageIndex_), true) : nullptr;
    if (image && !findAttr("compact-width")) {
        getViewArea().setCompactSize(CAxis::kX, image->getWidth());
    }
    if (image && !findAttr("compact-height")) {
        getViewArea().setCompactSize(CAxis::kY, image->getHeight());
    }
    markLook();
}

void CButton::draw(CDrawContext& context)
{
    if (isPicture_) {
        const auto index = static_cast<std::uint32_t>(imageIndex_);
        const CRect place = getAlignedImageCoords(index, true, kWholeClip, alignmentH_, alignmentV_);
        drawImage(context, index, true, {place.x, place.y}, kWholeClip, 1.0, isTilingX(), isTilingY());
        return;
    }
    drawFrame(context);
}

} // namespace qel
