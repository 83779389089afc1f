// A scale beside a view.
#include "CRuler.h"

#include "CDynamicList.h"
#include "CMinMax.h"
#include "LiteralText.h"
#include "NumberFormat.h"
#include "NumberSyntax.h"

#include <cmath>

namespace qel {

namespace {

constexpr const char* kViewAreaUpdate = "view-area-update";
constexpr const char* kTitlesChanged = "values-changed";
// The images are in groups: side, then form, then grade.
constexpr std::uint32_t kForms = 2;
constexpr std::uint32_t kGrades = 3;

} // namespace

void CRuler::buildClassInfo(CClassInfo& info)
{
    using Self = CRuler;
    CView::buildClassInfo(info);
    info.bind<&Self::ruledViewPath_>("ruled-view", "");
    info.bind<&Self::minMaxPath_>("min-max", "");
    info.bind<&Self::titlesPath_>("titles", "");
    info.bind<&Self::labelTag_>("label-tag", "ui:ruler-label");
    info.bind<&Self::labelFormat_, &Self::attrLook>("label-format", "%.0f");
    info.bind<&Self::rulerSize_, &Self::attrSize>("ruler-size", 25.0);
    info.bind<&Self::stepMinor_, &Self::attrLook>("step-minor", 3.0);
    info.bind<&Self::stepMajor_, &Self::attrLook>("step-major", 6.0);
    info.bind<&Self::labelSize_, &Self::attrLook>("label-size", 13.0);
    info.bind<&Self::labelHeight_, &Self::attrLook>("label-height", 0.0);
    info.bind<&Self::labelShift_, &Self::attrLook>("label-shift", 3.0);
    info.bind<&Self::isLinear_, &Self::attrLook>("is-labels-linear", false);
    info.bind<&Self::isWaveform_, &Self::attrLook>("is-waveform", false);
    info.bind<&Self::isShowLabels_, &Self::attrLook>("is-show-labels", true);
    info.bind<&Self::isShowHairlines_, &Self::attrLook>("is-show-hairlines", true);
    info.bind<&Self::isHairlineInward_, &Self::attrLook>("is-hairline-inward", false);
    info.handleEvent<&Self::onContentReady>("content-ready");
    info.handleEvent<&Self::onContentReady>("window-create");
    for (const char* const event : {"update", "titles-update", "ruled-view-update", "hairlines-update"}) {
        info.handleEvent<&Self::eventUpdate>(event);
    }
}

CError CRuler::init()
{
    QEL_TRY(CView::init(), getFullName());
    adoptSize();
    return {};
}

// What the ruler belongs to may lie behind it in the tree.
CError CRuler::onContentReady(const CAttrMap&)
{
    const auto find = [&](CObject*& out, const CString& path, const char* event, const char* handler) {
        QEL_TRY(
            require(out, path, "@qelstr_CRuler_onContentReady_NoObject Unable to locate ruled object '%1'."),
            getFullName());
        listenObject(out->getFullName(), event, handler);
        return CError();
    };
    CObject* found = nullptr;
    QEL_TRY(find(found, ruledViewPath_, kViewAreaUpdate, "ruled-view-update"), getFullName());
    if (!titlesPath_.isEmpty()) {
        QEL_TRY(find(found, titlesPath_, kTitlesChanged, "titles-update"), getFullName());
        titles_ = dynamic_cast<CDynamicList*>(found);
    } else {
        QEL_TRY(find(found, minMaxPath_, CMinMax::kUpdate, "update"), getFullName());
    }
    isReady_ = true;
    return update();
}

CError CRuler::attrLook()
{
    return isReady_ ? update() : CError();
}

CError CRuler::attrSize()
{
    if (getInitState() != InitState::kCreated && !isReleased()) {
        adoptSize();
    }
    return attrLook();
}

// It may stand or lie, and lets the tree say how long it is.
void CRuler::adoptSize()
{
    for (const CAxis axis : kAxes) {
        const bool isX = axis == CAxis::kX;
        if (getAttrString(isX ? "compact-width" : "compact-height").isEmpty()) {
            getViewArea().setCompactSize(axis, rulerSize_ * getInterfaceScale());
        }
    }
}

CError CRuler::onAreaSettled()
{
    const CHold keep(*this);
    QEL_TRY(CView::onAreaSettled(), getFullName());
    return isReady_ && !isReleased() ? update() : CError();
}

// --- layout

// False while there is nothing to measure.
bool CRuler::measureView()
{
    const auto* const ruled = dynamic_cast<const CView*>(findObject(ruledViewPath_));
    if (!ruled || ruled->getArea().isEmpty() || getArea().isEmpty()) {
        return false;
    }
    using Var = CViewArea::Var;
    const CRect& own = getArea();
    const CRect& other = ruled->getArea();
    const double toX = own.x + own.width * 0.5 - other.x - other.width * 0.5;
    const double toY = own.y + own.height * 0.5 - other.y - other.height * 0.5;
    const bool isBeside = own.right() <= other.x + 1.0 || own.x >= other.right() - 1.0;
    side_ = isBeside ? (toX < 0.0 ? Side::kLeft : Side::kRight) : (toY < 0.0 ? Side::kAbove : Side::kBelow);
    const CAxis axis = isStanding() ? CAxis::kY : CAxis::kX;
    const CViewArea& area = ruled->getViewArea();
    const double before = static_cast<double>(area.getValue(Var::kInnerBefore, axis));
    const double after = static_cast<double>(area.getValue(Var::kInnerAfter, axis));
    startPx_ = (isStanding() ? other.y - own.y : other.x - own.x) + before;
    lengthPx_ = (isStanding() ? other.height : other.width) - before - after;
    return lengthPx_ > 0.0;
}

double CRuler::alongPx(double position) const
{
    const double along = isStanding() ? 1.0 - position : position;
    return startPx_ + along * lengthPx_;
}

CError CRuler::update()
{
    std::vector<Label> labels;
    marks_.clear();
    if (measureView()) {
        QEL_TRY(titles_ ? layOutTitles(labels) : layOutScale(labels), getFullName());
    }
    markLook();
    if (!isShowLabels_) {
        labels.clear();
    }
    return placeLabels(labels);
}

CError CRuler::layOutScale(std::vector<Label>& labels)
{
    const auto* const range = dynamic_cast<const CMinMax*>(findObject(minMaxPath_));
    if (!range) {
        return {};
    }
    const double labelPx = labelSize_ * getInterfaceScale();
    marks_ = layoutRulerScale(*range, {.stepMinor = stepMinor_,
                                       .stepMajor = stepMajor_,
                                       .lengthPx = lengthPx_,
                                       .labelPx = labelPx,
                                       .isLinear = isLinear_,
                                       .isWaveform = isWaveform_});
    for (const RulerMark& mark : marks_) {
        if (mark.hasLabel) {
            labels.push_back(
                {formatNumber(labelFormat_, mark.value), alongPx(mark.position), labelPx, mark.grade});
        }
    }
    return {};
}

// Each in the middle of its share of the view.
CError CRuler::layOutTitles(std::vector<Label>& labels)
{
    std::vector<CDynamicListItem> items;
    QEL_TRY(titles_->getItems({}, items), getFullName());
    if (items.empty()) {
        return {};
    }
    const double share = lengthPx_ / static_cast<double>(items.size());
    const double labelPx = labelSize_ * getInterfaceScale();
    std::size_t step = 1;
    while (step < items.size() && share * static_cast<double>(step) < labelPx) {
        step *= 2;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        const double middle = startPx_ + (static_cast<double>(i) + 0.5) * share;
        RulerMark mark;
        mark.position = (middle - startPx_) / lengthPx_;
        mark.position = isStanding() ? 1.0 - mark.position : mark.position;
        mark.grade = RulerMark::kMajor;
        marks_.push_back(mark);
        if (i % step == 0) {
            labels.push_back({items[i].text, middle, std::max(labelPx, share * static_cast<double>(step))});
        }
    }
    return {};
}

// --- labels

CRect CRuler::labelRect(const Label& label) const
{
    const double scale = getInterfaceScale();
    // Lines that fade run below labels, ticks do not.
    const CImage* const tick =
        isShowHairlines_ && !isHairlineInward_ ? findImage(imageOf(label.grade), true) : nullptr;
    const double tickPx = !tick ? 0.0 : isStanding() ? tick->getWidth() : tick->getHeight();
    const double clear = tickPx + std::round(labelShift_ * scale);
    const double heightPx = std::round((labelHeight_ > 0.0 ? labelHeight_ : labelSize_) * scale);
    const CRect& own = getArea();
    if (isStanding()) {
        return {side_ == Side::kLeft ? 0.0 : clear,
                static_cast<double>(roundToPixel(label.alongPx - heightPx * 0.5)),
                std::max(0.0, own.width - clear), heightPx};
    }
    const double width = std::floor(label.roomPx);
    return {static_cast<double>(roundToPixel(label.alongPx - width * 0.5)),
            side_ == Side::kAbove ? own.height - clear - heightPx : clear, width, heightPx};
}

CError CRuler::placeLabels(const std::vector<Label>& labels)
{
    const CHold keep(*this);
    for (std::size_t i = 0; i < labels.size(); ++i) {
        QEL_TRY(placeLabel(i, labels[i]), getFullName());
    }
    for (std::size_t i = labels.size(); i < labels_.size(); ++i) {
        if (CObject* const spare = findObject(labels_[i])) {
            QEL_TRY(spare->setAttribute("is-visible", CAttrValue(false), true), getFullName());
        }
    }
    return {};
}

// Labels that are there already are given another text and place.
CError CRuler::placeLabel(std::size_t index, const Label& label)
{
    const double scale = getInterfaceScale();
    const CRect rect = labelRect(label);
    const auto number = [&](double px) { return formatReal(px / scale, 4); };
    CAttrMap attributes;
    attributes["title"] = CAttrValue(literalText(label.text));
    attributes["element"] = CAttrValue(static_cast<std::int32_t>(index));
    attributes["opacity"] = CAttrValue(1.0);
    attributes["is-visible"] = CAttrValue(true);
    attributes["placement"] = CAttrValue("overlay");
    attributes["outer-border"] = CAttrValue(CString("L") + number(rect.x) + " T" + number(rect.y));
    attributes["width"] = CAttrValue(number(rect.width));
    attributes["height"] = CAttrValue(number(rect.height));
    attributes["text-alignment"] = CAttrValue(side_ == Side::kLeft    ? "right"
                                              : side_ == Side::kRight ? "left"
                                                                      : "center");
    if (index < labels_.size()) {
        CObject* const known = findObject(labels_[index]);
        for (const auto& [key, value] : attributes) {
            if (known && !known->isReleased() && known->getAttrString(key) != value.toString()) {
                QEL_TRY(known->setAttribute(key, value, true), getFullName());
            }
        }
        return {};
    }
    CView* made = nullptr;
    if (CError error = createChild(made, labelTag_, "label", false, nullptr, &attributes)) {
        return reportError(std::move(error), __FILE__, __LINE__, getFullName(),
                           "@qelstr_CRuler_placeLabel_NoLabel Unable to create a label.");
    }
    labels_.push_back(made->getFullName());
    return {};
}

// --- drawing

std::uint32_t CRuler::imageOf(RulerMark::Grade grade) const
{
    return (static_cast<std::uint32_t>(side_) * kForms + (isHairlineInward_ ? 1U : 0U)) * kGrades + grade;
}

void CRuler::draw(CDrawContext& context)
{
    if (!isShowHairlines_) {
        return;
    }
    const CRect& own = getArea();
    for (const RulerMark& mark : marks_) {
        const std::uint32_t index = imageOf(mark.grade);
        const CImage* const image = findImage(index, true);
        if (!image) {
            continue;
        }
        // A mark is a pixel thick, and the last one still within the scale.
        const double along = std::min(std::round(alongPx(mark.position)), startPx_ + lengthPx_ - 1.0);
        const CPoint corner =
            isStanding() ? CPoint{side_ == Side::kLeft ? own.width - image->getWidth() : 0.0, along}
                         : CPoint{along, side_ == Side::kAbove ? own.height - image->getHeight() : 0.0};
        drawImage(context, index, true, corner, 1, 1.0, false, false);
    }
}

} // namespace qel
