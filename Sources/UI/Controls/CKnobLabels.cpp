// The scale around a knob.
#include "CKnobLabels.h"

#include "CDynamicList.h"
#include "CFontObject.h"
#include "CGlobalSettings.h"
#include "CUIParam.h"
#include "KnobLaws.h"
#include "Math/Elementary.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

constexpr const char* kScalePath = ".scale";
constexpr const char* kScaleName = "scale";
constexpr const char* kLabelName = "label";
constexpr const char* kScaleChange = "scale-values-change";
constexpr const char* kVisible = "is-visible";

} // namespace

void CKnobLabels::buildClassInfo(CClassInfo& info)
{
    using Self = CKnobLabels;
    CPicture::buildClassInfo(info);
    info.bind<&Self::count_>("knob-label-count", 10);
    info.bind<&Self::radius_>("label-radius", 26.6);
    info.bind<&Self::labelWidth_>("label-width", 24.0);
    info.bind<&Self::fontName_>("font-name", "shared::font.small");
    info.bind<&Self::textColor_>("text-color", "KnobLabelsText");
    info.handleEvent<&Self::eventShow>("show");
    info.handleEvent<&Self::eventHide>("hide");
    info.handleEvent<&Self::eventScaleValuesChange>(kScaleChange);
}

CError CKnobLabels::init()
{
    QEL_TRY(CPicture::init(), getFullName());
    QEL_TRY(require(settings_, "ui.global-settings",
                    "@qelstr_CKnobLabels_init_NoGlobalSettings Unable to locate global settings object."),
            getFullName());
    return {};
}

CError CKnobLabels::initChilds()
{
    QEL_TRY(CPicture::initChilds(), getFullName());
    QEL_TRY(setAttribute(kVisible, CAttrValue(false), true), getFullName());
    QEL_TRY(makeScale(), getFullName());
    listenObject(kScalePath, "values-changed", kScaleChange);
    CDynamicList* list = nullptr;
    return findScale(list);
}

CError CKnobLabels::makeScale()
{
    if (findObject(kScalePath)) {
        return {};
    }
    const CObject* bridge = nullptr;
    CObject& knob = *getParent();
    for (std::size_t i = 0; i < knob.getChildCount() && !bridge; ++i) {
        const auto* const param = dynamic_cast<const CUIParam*>(knob.getChild(i));
        bridge = param ? param->getBridge() : nullptr;
    }
    if (const CString path = knob.getAttrString("bridge"); !bridge && !path.isEmpty()) {
        bridge = knob.findObject(path);
    }
    if (!bridge) {
        return {}; // told of when the scale is read
    }
    CAttrMap attributes;
    attributes["mode"] = CAttrValue("audio-min-max");
    attributes["bridge"] = CAttrValue(bridge->getFullName());
    attributes["value-count"] = CAttrValue(count_);
    attributes["format-id"] = CAttrValue("knob-circle");
    CObject* list = nullptr;
    return createChild(list, "ui:value-list", kScaleName, false, nullptr, &attributes);
}

// --- the texts

CError CKnobLabels::findScale(CDynamicList*& outList)
{
    outList = dynamic_cast<CDynamicList*>(findObject(kScalePath));
    if (!outList) {
        QEL_FAIL(getFullName(), "@qelstr_CKnobLabels_update_NoScaleValues Unable to locate scale values.");
    }
    return {};
}

CError CKnobLabels::eventScaleValuesChange(const CAttrMap&)
{
    return getAttrBool(kVisible) ? update() : CError();
}

CError CKnobLabels::update()
{
    CDynamicList* list = nullptr;
    QEL_TRY(findScale(list), getFullName());
    std::vector<CDynamicListItem> items;
    QEL_TRY(list->getItems({}, items), getFullName());
    items.resize(std::min(items.size(), static_cast<std::size_t>(std::max(count_, 0))));
    std::vector<CString> texts;
    for (const CDynamicListItem& item : items) {
        texts.push_back(item.text);
    }
    if (texts == texts_) {
        return {};
    }
    while (CObject* const label = findChild(kLabelName)) {
        releaseObject(label);
    }
    texts_ = texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const double last = std::max(static_cast<double>(texts.size()) - 1.0, 1.0);
        if (CError error = makeLabel(texts[i], static_cast<double>(i) / last)) {
            return reportError(std::move(error), __FILE__, __LINE__, getFullName(),
                               "@qelstr_CKnobLabels_update_NoLabels Unable to create scale labels.");
        }
    }
    return {};
}

double CKnobLabels::readNumber(const char* name, double fallback) const
{
    return getAttrReal(name, getParent()->getAttrReal(name, fallback));
}

CError CKnobLabels::makeLabel(const CString& text, double position)
{
    double height = 12.0;
    if (auto* const font = dynamic_cast<CFontObject*>(findObject(fontName_))) {
        std::shared_ptr<const CFont> regular;
        QEL_TRY(font->getFont(CFontStyle::kRegular, getInterfaceScale(), regular), getFullName());
        height = regular ? regular->getLineHeight() : height;
    }
    constexpr CKnobZone kWhole;
    const CKnobZone zone{readNumber("zone-start", kWhole.start), readNumber("zone-end", kWhole.end)};
    const double angle = zone.angleOf(position);
    const double middleX = readNumber("center-x", getParent()->getAttrReal("width") / 2.0);
    const double middleY = readNumber("center-y", getParent()->getAttrReal("height") / 2.0);
    const double left = middleX + radius_ * math::cos(angle) - labelWidth_ / 2.0;
    const double top = middleY + radius_ * math::sin(angle) - height / 2.0;
    CAttrMap attributes;
    attributes["title"] = CAttrValue(text);
    attributes["font-name"] = CAttrValue(fontName_);
    attributes["text-color"] = CAttrValue(textColor_);
    attributes["text-alignment"] = CAttrValue("center");
    attributes["is-text-wrapped"] = CAttrValue(false);
    attributes["is-intercepting"] = CAttrValue(false);
    attributes["placement"] = CAttrValue("overlay");
    attributes["width"] = CAttrValue(labelWidth_);
    attributes["height"] = CAttrValue(height);
    attributes["outer-border"] = CAttrValue("L" + formatReal(left, 2) + " T" + formatReal(top, 2));
    CView* label = nullptr;
    return createChild(label, "ui:label", kLabelName, false, nullptr, &attributes);
}

// --- shown and hidden

CError CKnobLabels::eventShow(const CAttrMap&)
{
    if (!settings_->isShowKnobLabels()) {
        return {};
    }
    QEL_TRY(update(), getFullName());
    return setAttribute(kVisible, CAttrValue(true), true);
}

CError CKnobLabels::eventHide(const CAttrMap&)
{
    return getAttrBool(kVisible) ? setAttribute(kVisible, CAttrValue(false), true) : CError();
}

} // namespace qel
