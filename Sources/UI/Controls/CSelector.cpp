// A row of buttons, one of which is on.
#include "CSelector.h"

#include "ClickCommands.h"
#include "EventParameters.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kReleased = "button-released";
constexpr const char* kButtonIndex = "index";

// What the selector says of its buttons, and what it is called there.
struct Handed
{
    const char* own;
    const char* button;
};
constexpr Handed kHanded[] = {{"button-width", "width"},
                              {"button-height", "height"},
                              {"button-color", "color"},
                              {"button-inner-border", "inner-border"}};

constexpr std::int32_t kMaxButtons = 256;

} // namespace

void CSelector::buildClassInfo(CClassInfo& info)
{
    using Self = CSelector;
    CView::buildClassInfo(info);
    info.bind<&Self::count_, &Self::attrTitles>("button-count", -1);
    info.bind<&Self::titleList_, &Self::attrTitles>("button-title-list", "");
    info.bind<&Self::separator_, &Self::attrTitles>("separator-char", ";");
    info.bind<&Self::tag_>("button-tag", "ui:button");
    info.bind<&Self::active_, &Self::attrActiveButton>("active-button", -1);
    info.bind<&Self::isRightClickAllowed_>("is-right-click-allowed", false);
    info.handleEvent<&Self::eventButtonReleased>(kReleased);
    info.handleEvent<&Self::eventRebuildButtons>("rebuild-buttons");
}

CError CSelector::initChilds()
{
    QEL_TRY(CView::initChilds(), getFullName());
    isUp_ = true;
    QEL_TRY(eventRebuildButtons({}), getFullName());
    return {};
}

void CSelector::onChildRemoved(CObject& child)
{
    std::erase_if(buttons_,
                  [&](const CView* button) { return static_cast<const CObject*>(button) == &child; });
    CView::onChildRemoved(child);
}

// --- the buttons

CError CSelector::attrTitles()
{
    return isUp() ? eventRebuildButtons({}) : CError();
}

CError CSelector::countButtons(std::int32_t& out)
{
    out = count_ >= 0 ? count_ : static_cast<std::int32_t>(titles_.size());
    return {};
}

void CSelector::describeButton(std::int32_t index, CAttrMap& attributes)
{
    const auto place = static_cast<std::size_t>(index);
    attributes["title"] = CAttrValue(place < titles_.size() ? titles_[place] : CString::number(index + 1));
}

CError CSelector::eventRebuildButtons(const CAttrMap&)
{
    if (!isUp()) {
        return {};
    }
    const CHold hold(*this);
    while (!buttons_.empty()) {
        releaseObject(buttons_.back()); // leaves the list by onChildRemoved()
    }
    titles_.clear();
    if (!titleList_.isEmpty()) {
        titles_ = separator_.isEmpty() ? std::vector<CString>{titleList_} : titleList_.split(separator_[0]);
    }
    std::int32_t count = 0;
    QEL_TRY(countButtons(count), getFullName());
    for (std::int32_t i = 0; i < std::min(count, kMaxButtons); ++i) {
        QEL_TRY(makeButton(i), getFullName());
    }
    QEL_TRY(updateActive(), getFullName());
    return attrActiveButton();
}

CError CSelector::makeButton(std::int32_t index)
{
    CAttrMap attributes;
    attributes["placement"] = CAttrValue("left");
    for (const Handed& handed : kHanded) {
        if (const CAttrValue* const value = findAttr(handed.own)) {
            attributes[handed.button] = *value;
        }
    }
    if (isRightClickAllowed_) {
        attributes["is-right-click-allowed"] = CAttrValue(true);
    }
    describeButton(index, attributes);
    CView* button = nullptr;
    QEL_TRY(createChild(button, tag_, "button", false, nullptr, &attributes), getFullName());
    buttons_.push_back(button);
    QEL_TRY(addClickCommand(*button, "mouse-release", kReleased, *this, kButtonIndex, index), getFullName());
    if (isRightClickAllowed_) {
        QEL_TRY(addClickCommand(*button, "mouse-release-r", kReleased, *this, kButtonIndex, index),
                getFullName());
    }
    return {};
}

CView* CSelector::getButton(std::int32_t index) const
{
    return index >= 0 && index < getButtonCount() ? buttons_[static_cast<std::size_t>(index)] : nullptr;
}

// --- which one is on

CError CSelector::eventButtonReleased(const CAttrMap& parameters)
{
    const auto index = CAttrValue(eventText(parameters, kButtonIndex)).toInteger().value_or(-1);
    if (!getButton(index) || actsDisabled()) {
        return {};
    }
    return onButton(index, eventText(parameters, "button") == "r");
}

CError CSelector::setActiveButton(std::int32_t index)
{
    return index == active_ ? CError() : setAttribute("active-button", CAttrValue(index), true);
}

CError CSelector::attrActiveButton()
{
    if (!isUp()) {
        return {};
    }
    CError first;
    const std::int32_t active = active_;
    for (std::int32_t i = 0; i < getButtonCount(); ++i) {
        CView& button = *getButton(i);
        if (button.getAttrBool("is-active") != (i == active)) {
            collectError(first, button.setAttribute("is-active", CAttrValue(i == active), true));
        }
    }
    return first;
}

} // namespace qel
