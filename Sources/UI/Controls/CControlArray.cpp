// A row of like controls, one for each value.
#include "CControlArray.h"

#include "CButton.h"
#include "CUIParam.h"
#include "ClickCommands.h"
#include "EventParameters.h"
#include "LiteralText.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr const char* kListChange = "*list-change";
constexpr const char* kObjectIndex = "object-index";
constexpr const char* kSelected = "selected-object";
constexpr const char* kActiveState = "active";
constexpr const char* kError = "error";
constexpr const char* kButtonPath = ".button";

constexpr std::int32_t kMaxItems = 256;

CError setIfOther(CObject& object, const char* name, const CString& value)
{
    const CAttrValue* const present = object.findAttr(name);
    return present && present->toString() == value ? CError() : object.setAttribute(name, value, true);
}

std::int32_t toNumber(double value)
{
    return static_cast<std::int32_t>(std::lround(std::clamp(value, -1e9, 1e9)));
}

} // namespace

void CControlArray::buildClassInfo(CClassInfo& info)
{
    using Self = CControlArray;
    CView::buildClassInfo(info);
    info.bind<&Self::tag_>("object-tag", "");
    info.bind<&Self::count_, &Self::attrItems>("object-count", 0);
    info.bind<&Self::titleList_, &Self::attrLists>("object-title-list", "");
    info.bind<&Self::valueList_, &Self::attrLists>("object-value-list", "");
    info.bind<&Self::valueOffset_, &Self::attrItems>("object-value-offset", 0);
    info.bind<&Self::separator_, &Self::attrLists>("separator-char", ";");
    info.bind<&Self::color_, &Self::attrItems>("object-color", "Action");
    info.bind<&Self::textColor_, &Self::attrItems>("object-text-color", "Text");
    info.bind<&Self::statePath_>("object-state-path", "");
    info.bind<&Self::selected_, &Self::attrItems>(kSelected, -1);
    info.handleEvent<&Self::eventListChange>(kListChange);
    info.handleEvent<&Self::eventReleased>("object-released");
    info.handleEvent<&Self::eventValuePicked>("object-value-picked");
}

CError CControlArray::init()
{
    QEL_TRY(CView::init(), getFullName());
    if (tag_.isEmpty()) {
        QEL_FAIL(getFullName(), "@qelstr_CControlArray_init_NoTag Object tag not defined.");
    }
    return {};
}

CError CControlArray::initChilds()
{
    QEL_TRY(CView::initChilds(), getFullName());
    isUp_ = true;
    QEL_TRY(attrLists(), getFullName());
    return {};
}

void CControlArray::onChildRemoved(CObject& child)
{
    std::erase_if(items_, [&](const CView* item) { return static_cast<const CObject*>(item) == &child; });
    CView::onChildRemoved(child);
}

// --- what there is to show

CError CControlArray::attrLists()
{
    if (!isUp()) {
        return {};
    }
    titleSource_.attach(*this, titleList_, separator_, kListChange);
    valueSource_.attach(*this, valueList_, separator_, kListChange);
    return eventListChange({});
}

CError CControlArray::eventListChange(const CAttrMap&)
{
    QEL_TRY(titleSource_.read(titles_), getFullName());
    QEL_TRY(valueSource_.read(values_), getFullName());
    return update();
}

CError CControlArray::attrItems()
{
    return isUp() ? update() : CError();
}

std::int32_t CControlArray::wantedCount() const
{
    std::int32_t count = count_ > 0 ? count_ : static_cast<std::int32_t>(titles_.size());
    if (countParam_) {
        count = toNumber(countParam_->getValue(0));
    }
    return std::clamp(count, 0, kMaxItems);
}

CString CControlArray::titleOf(std::size_t index) const
{
    if (index >= titles_.size()) {
        return CString::number(static_cast<std::int64_t>(index) + 1);
    }
    // What is written out in the tree may have markup.
    return titleSource_.findList() ? literalText(titles_[index].text) : titles_[index].text;
}

std::int32_t CControlArray::selectorOf(std::size_t index) const
{
    return titleSource_.findList() && index < titles_.size() ? titles_[index].value
                                                             : static_cast<std::int32_t>(index);
}

std::int32_t CControlArray::valueOf(std::size_t index) const
{
    const auto element = static_cast<std::int32_t>(index);
    return valueParam_ ? toNumber(valueParam_->getValue(element)) : element;
}

// --- items

CError CControlArray::update()
{
    const CHold hold(*this);
    const auto count = static_cast<std::size_t>(wantedCount());
    while (items_.size() > count) {
        releaseObject(items_.back()); // leaves the list by onChildRemoved()
    }
    while (items_.size() < count) {
        QEL_TRY(makeItem(), getFullName());
    }
    for (std::size_t i = 0; i < items_.size() && isUp(); ++i) {
        QEL_TRY(describe(i), getFullName());
    }
    return isUp() ? showSelection() : CError();
}

CError CControlArray::makeItem()
{
    const auto index = static_cast<std::int32_t>(items_.size());
    CObject* const list = valueSource_.findList();
    CAttrMap attributes;
    attributes[kObjectIndex] = CAttrValue(index);
    attributes["object-index-incr"] = CAttrValue(index + 1);
    attributes["object-title"] = CAttrValue(titleOf(items_.size()));
    attributes["object-color"] = CAttrValue(color_);
    attributes["object-text-color"] = CAttrValue(textColor_);
    attributes["object-value"] = CAttrValue(index);
    attributes["object-value-title"] = CAttrValue("");
    attributes["object-value-list"] = CAttrValue(list ? list->getFullName() : CString());
    attributes["object-state-path"] = CAttrValue(statePath_);
    CObject* made = nullptr;
    QEL_TRY(createChild(made, tag_, "item", false, nullptr, &attributes), getFullName());
    auto* const item = dynamic_cast<CView*>(made);
    if (!item) {
        releaseObject(made);
        QEL_FAIL(getFullName(), "@qelstr_CControlArray_makeItem_NoView Object is not a view.");
    }
    items_.push_back(item);
    return wireItem(*item, index);
}

CError CControlArray::wireItem(CView& item, std::int32_t index)
{
    auto* const button = dynamic_cast<CButton*>(stateViewOf(item));
    if (!button) {
        return {};
    }
    const CObject* const list = valueSource_.findList();
    if (!list) {
        return addClickCommand(*button, "mouse-release", "object-released", *this, kObjectIndex, index);
    }
    QEL_TRY(button->setAttribute("item-list", list->getFullName(), true), getFullName());
    return addClickCommand(*button, "popup-result", "object-value-picked", *this, kObjectIndex, index);
}

CView* CControlArray::stateViewOf(CView& item) const
{
    auto* const view = dynamic_cast<CView*>(item.findObject(statePath_.isEmpty() ? kButtonPath : statePath_));
    return view ? view : &item;
}

CError CControlArray::describe(std::size_t index)
{
    CView& item = *items_[index];
    const CHold hold(item);
    const std::int32_t value = valueOf(index);
    const auto named = std::ranges::find_if(
        values_, [&](const CDynamicListItem& one) { return one.value + valueOffset_ == value; });
    const bool isNamed = named != values_.end();
    const CString shown = literalText(isNamed       ? named->text
                                      : valueParam_ ? valueParam_->getText(static_cast<std::int32_t>(index))
                                                    : CString());
    CError first = setIfOther(item, "object-title", titleOf(index));
    collectError(first, setIfOther(item, "object-color", color_));
    collectError(first, setIfOther(item, "object-text-color", textColor_));
    collectError(first, setIfOther(item, "object-value", CString::number(value)));
    collectError(first, setIfOther(item, "object-value-title", shown));
    if (!item.isReleased()) {
        CView* const view = stateViewOf(item);
        const bool isError = valueParam_ && !values_.empty() && !isNamed;
        collectError(first, isError ? view->setState(kError) : view->unsetState(kError));
        const auto picked = static_cast<std::int32_t>(named - values_.begin());
        if (isNamed && dynamic_cast<CButton*>(view)) {
            collectError(first, setIfOther(*view, "index", CString::number(picked)));
            collectError(first, setIfOther(*view, "selected-item", shown));
        }
    }
    return first;
}

CError CControlArray::showSelection()
{
    CError first;
    const std::int32_t chosen = selectedParam_ ? toNumber(selectedParam_->getValue(0)) : selected_;
    const std::vector<CView*> items = items_;
    for (std::size_t i = 0; i < items.size() && i < items_.size(); ++i) {
        const bool isSelected = (selectedParam_ ? selectorOf(i) : static_cast<std::int32_t>(i)) == chosen;
        CView* const view = stateViewOf(*items_[i]);
        collectError(first, isSelected ? view->setState(kActiveState) : view->unsetState(kActiveState));
    }
    return first;
}

// --- the user

CError CControlArray::eventReleased(const CAttrMap& parameters)
{
    const auto index = CAttrValue(eventText(parameters, kObjectIndex)).toInteger().value_or(-1);
    if (index < 0 || index >= static_cast<std::int32_t>(items_.size()) || actsDisabled()) {
        return {};
    }
    const CHold hold(*this);
    CError first;
    if (selectedParam_) {
        collectError(first, selectedParam_->setValue(0, selectorOf(static_cast<std::size_t>(index))));
    } else {
        collectError(first, setAttribute(kSelected, CAttrValue(index), true));
    }
    CAttrMap told;
    told["index"] = CAttrValue(index);
    collectError(first, fireEvent("object-selected", told));
    return first;
}

CError CControlArray::eventValuePicked(const CAttrMap& parameters)
{
    const auto index = CAttrValue(eventText(parameters, kObjectIndex)).toInteger().value_or(-1);
    const double picked = CAttrValue(eventText(parameters, "index")).toReal().value_or(-1.0);
    if (!valueParam_ || index < 0 || actsDisabled() || picked < 0.0 ||
        picked >= static_cast<double>(values_.size())) {
        return {};
    }
    return valueParam_->setValue(index, values_[static_cast<std::size_t>(picked)].value + valueOffset_);
}

// --- parameters

CError CControlArray::onParamAdded(CUIParam& param)
{
    const CString name = param.getName();
    if (name == "ui-param-count") {
        countParam_ = &param;
    } else if (name == "ui-param-selected-object") {
        selectedParam_ = &param;
    } else {
        valueParam_ = &param;
    }
    return {};
}

CError CControlArray::onParamRemoved(CUIParam& param)
{
    for (CUIParam** const kept : {&countParam_, &selectedParam_, &valueParam_}) {
        if (*kept == &param) {
            *kept = nullptr;
        }
    }
    return {};
}

CError CControlArray::onParamUpdate(CUIParam& param)
{
    if (!isUp()) {
        return {};
    }
    // The attribute's handler shows what else has changed.
    return &param == selectedParam_ ? setAttribute(kSelected, CAttrValue(toNumber(param.getValue(0))), true)
                                    : update();
}

CError CControlArray::onParamInfo(CUIParam& param)
{
    return onParamUpdate(param);
}

} // namespace qel
