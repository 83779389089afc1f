// What all views have in common: their place in the window.
#include "CViewBasePlacement.h"

#include "CInterfaceScale.h"
#include "CTrace.h"
#include "NumberSyntax.h"

#include <algorithm>
#include <limits>

namespace qel {

namespace {

constexpr double kMinRatio = 0.0001;

CViewBasePlacement* viewAbove(const CObject& object)
{
    for (CObject* above = object.getParent(); above; above = above->getParent()) {
        if (auto* view = dynamic_cast<CViewBasePlacement*>(above)) {
            return view;
        }
    }
    return nullptr;
}

std::int32_t saturatedSum(std::int32_t a, std::int32_t b)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{a} + b, Limits::min(), Limits::max()));
}

} // namespace

void CViewBasePlacement::buildClassInfo(CClassInfo& info)
{
    using Self = CViewBasePlacement;
    CObject::buildClassInfo(info);
    info.handle<&Self::attrAlignmentH>("alignment-h");
    info.handle<&Self::attrAlignmentV>("alignment-v");
    info.handle<&Self::attrCompactWidth>("compact-width");
    info.handle<&Self::attrCompactHeight>("compact-height");
    info.handle<&Self::attrInlineAlignmentH>("inline-alignment-h");
    info.handle<&Self::attrInlineAlignmentV>("inline-alignment-v");
    info.handle<&Self::attrInnerBorder>("inner-border");
    info.bind<&Self::isDisabled_, &Self::attrIsDisabled>("is-disabled", false);
    info.handle<&Self::attrIsInlineVertical>("is-inline-vertical");
    info.handle<&Self::attrIsNewInlineRow>("is-new-inline-row");
    info.handle<&Self::attrIsVisible>("is-visible");
    info.handle<&Self::attrMinRatioX>("min-ratio-x");
    info.handle<&Self::attrMinRatioY>("min-ratio-y");
    info.handle<&Self::attrMinWidth>("min-width");
    info.handle<&Self::attrMinHeight>("min-height");
    info.handle<&Self::attrOffsetX>("offset-x");
    info.handle<&Self::attrOffsetY>("offset-y");
    info.handle<&Self::attrOuterBorder>("outer-border");
    info.handle<&Self::attrPlacement>("placement");
    info.handle<&Self::attrRatioX>("ratio-x");
    info.handle<&Self::attrRatioY>("ratio-y");
    info.handle<&Self::attrScrollerWidth>("scroller-width");
    info.handle<&Self::attrScrollerHeight>("scroller-height");
    info.handle<&Self::attrSpread>("spread");
    info.handle<&Self::attrWidth>("width");
    info.handle<&Self::attrHeight>("height");
}

CViewBasePlacement::CViewBasePlacement() = default;
CViewBasePlacement::~CViewBasePlacement() = default;

CError CViewBasePlacement::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(initParents(), getFullName());
    isScrollable_ = getAttrBool("is-scrollable");
    isDecorative_ = getAttrBool("is-decorative");
    QEL_TRY(initOrder(), getFullName());
    if (isRootView()) {
        context_ = makeLayoutContext();
    }
    CLayoutContext& context = isRootView() ? *context_ : parentView_->getLayoutContext();
    interfaceScale_ = context.getScale();
    CViewArea::Options options;
    options.parent = isRootView() ? nullptr : parentView_->area_.get();
    options.handler = dynamic_cast<CViewAreaUpdateHandler*>(this);
    options.isScrollable = isScrollable_;
    options.unclipLevel = getAttrInt("unclip-level");
    area_ = std::make_unique<CViewArea>(context, options);
    QEL_TRY(area_->init(), getFullName());
    return {};
}

CError CViewBasePlacement::initParents()
{
    if (getAttrBool("is-root-view")) {
        rootView_ = this;
        return {};
    }
    parentView_ = viewAbove(*this);
    if (!parentView_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CViewBasePlacement_init_ParentNotFound Unable to locate parent view.");
    }
    rootView_ = parentView_->rootView_;
    if (!rootView_ || !parentView_->area_) {
        QEL_FAIL(getFullName(), "@qelstr_CViewBasePlacement_init_RootNotFound Unable to locate root view.");
    }
    return {};
}

CError CViewBasePlacement::initOrder()
{
    const bool isDynamic = getAttrBool("is-dynamic") || (parentView_ && parentView_->isDynamic_);
    isDynamic_ = isDynamic && !getAttrBool("is-force-non-dynamic");
    zIndexOfDynamicChilds_ = getAttrInt("z-index-dynamic-childs");
    zIndexOfStaticChilds_ = getAttrInt("z-index-static-childs");

    const CString place = getAttrString("z-index");
    const std::optional<std::int32_t> number = parseInteger(place);
    if (!number && !place.isEmpty()) {
        const auto* target = dynamic_cast<const CViewBasePlacement*>(findObject(place));
        if (!target) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CViewBasePlacement_init_ZIndexTarget Z-index target not found: %1", place);
        }
        zIndex_ = target->zIndex_;
    } else if (parentView_) {
        const std::int32_t inherited =
            isDynamic_ ? parentView_->zIndexOfDynamicChilds_ : parentView_->zIndexOfStaticChilds_;
        zIndex_ = saturatedSum(parentView_->zIndex_, number.value_or(inherited));
    } else {
        zIndex_ = number.value_or(0);
    }
    return {};
}

std::shared_ptr<CLayoutContext> CViewBasePlacement::makeLayoutContext()
{
    return std::make_shared<CLayoutContext>(CInterfaceScale::get());
}

CError CViewBasePlacement::solveAndAdoptWindowSize()
{
    return solveLayout();
}

CError CViewBasePlacement::setRootSize(double width, double height)
{
    QEL_TRY(area_->setSize(CAxis::kX, {CViewSize::Form::kNumber, width}), getFullName());
    QEL_TRY(area_->setSize(CAxis::kY, {CViewSize::Form::kNumber, height}), getFullName());
    return {};
}

// --- handlers of attributes. An attribute that follows another may change before init: its handler is left
// to do what it can, since nothing is laid out yet.

CError CViewBasePlacement::setAlignment(const char* name, CAxis axis, bool isOfRows)
{
    const CString text = getAttrString(name);
    const std::optional<CAlignment> alignment = parseAlignment(text, axis);
    if (!alignment) {
        QEL_FAIL(getFullName(),
                 CString("@qelstr_CViewBasePlacement_alignment_Invalid Invalid ") + name + " '%1'.", text);
    }
    if (area_ && isOfRows) {
        area_->setInlineAlignment(axis, *alignment);
    } else if (area_) {
        area_->setAlignment(axis, *alignment);
    }
    return {};
}

CError CViewBasePlacement::attrAlignmentH()
{
    return setAlignment("alignment-h", CAxis::kX, false);
}

CError CViewBasePlacement::attrAlignmentV()
{
    return setAlignment("alignment-v", CAxis::kY, false);
}

CError CViewBasePlacement::attrInlineAlignmentH()
{
    return setAlignment("inline-alignment-h", CAxis::kX, true);
}

CError CViewBasePlacement::attrInlineAlignmentV()
{
    return setAlignment("inline-alignment-v", CAxis::kY, true);
}

CError CViewBasePlacement::setCompactSize(const char* name, CAxis axis)
{
    const CString text = getAttrString(name);
    if (area_ && text.isEmpty()) {
        area_->setCompactSize(axis, std::nullopt);
    } else if (area_) {
        area_->setCompactSize(axis, parsePixels(text, interfaceScale_));
    }
    return {};
}

CError CViewBasePlacement::attrCompactWidth()
{
    return setCompactSize("compact-width", CAxis::kX);
}

CError CViewBasePlacement::attrCompactHeight()
{
    return setCompactSize("compact-height", CAxis::kY);
}

CViewBorder CViewBasePlacement::borderAttr(const char* name, bool isRounded) const
{
    return parseBorder(getAttrString(name), interfaceScale_, isRounded, getFullName());
}

CError CViewBasePlacement::attrInnerBorder()
{
    if (area_) {
        area_->setInnerBorder(borderAttr("inner-border", true));
    }
    return {};
}

CError CViewBasePlacement::attrOuterBorder()
{
    if (area_) {
        area_->setOuterBorder(borderAttr("outer-border", true));
    }
    return {};
}

CError CViewBasePlacement::attrSpread()
{
    if (area_) {
        area_->setSpread(borderAttr("spread", false));
    }
    return {};
}

CError CViewBasePlacement::attrIsDisabled()
{
    return {};
}

CError CViewBasePlacement::attrIsInlineVertical()
{
    if (area_) {
        area_->setInlineVertical(getAttrBool("is-inline-vertical"));
    }
    return {};
}

CError CViewBasePlacement::attrIsNewInlineRow()
{
    if (area_) {
        area_->setNewInlineRow(getAttrBool("is-new-inline-row"));
    }
    return {};
}

CError CViewBasePlacement::attrIsVisible()
{
    if (area_) {
        area_->setVisible(getAttrBool("is-visible", true));
    }
    return {};
}

CError CViewBasePlacement::setZoom(const char* name, const char* leastName, CAxis axis)
{
    if (area_) {
        const double least = std::max(getAttrReal(leastName, kMinRatio), kMinRatio);
        area_->setZoom(axis, std::max(getAttrReal(name, 1.0), least));
    }
    return {};
}

CError CViewBasePlacement::attrRatioX()
{
    return setZoom("ratio-x", "min-ratio-x", CAxis::kX);
}

CError CViewBasePlacement::attrRatioY()
{
    return setZoom("ratio-y", "min-ratio-y", CAxis::kY);
}

CError CViewBasePlacement::attrMinRatioX()
{
    return setZoom("ratio-x", "min-ratio-x", CAxis::kX);
}

CError CViewBasePlacement::attrMinRatioY()
{
    return setZoom("ratio-y", "min-ratio-y", CAxis::kY);
}

CError CViewBasePlacement::attrOffsetX()
{
    if (area_) {
        area_->setScroll(CAxis::kX, getAttrReal("offset-x"));
    }
    return {};
}

CError CViewBasePlacement::attrOffsetY()
{
    if (area_) {
        area_->setScroll(CAxis::kY, getAttrReal("offset-y"));
    }
    return {};
}

CError CViewBasePlacement::attrScrollerWidth()
{
    if (area_) {
        area_->setScrollerSize(CAxis::kX, parsePixels(getAttrString("scroller-width"), interfaceScale_));
    }
    return {};
}

CError CViewBasePlacement::attrScrollerHeight()
{
    if (area_) {
        area_->setScrollerSize(CAxis::kY, parsePixels(getAttrString("scroller-height"), interfaceScale_));
    }
    return {};
}

CError CViewBasePlacement::attrWidth()
{
    return area_ ? area_->setSize(CAxis::kX, parseViewSize(getAttrString("width"), interfaceScale_))
                 : CError();
}

CError CViewBasePlacement::attrHeight()
{
    return area_ ? area_->setSize(CAxis::kY, parseViewSize(getAttrString("height"), interfaceScale_))
                 : CError();
}

CError CViewBasePlacement::attrMinWidth()
{
    return area_ ? area_->setMinSize(CAxis::kX, parseMinSize(getAttrString("min-width"), interfaceScale_))
                 : CError();
}

CError CViewBasePlacement::attrMinHeight()
{
    return area_ ? area_->setMinSize(CAxis::kY, parseMinSize(getAttrString("min-height"), interfaceScale_))
                 : CError();
}

CViewArea* CViewBasePlacement::findMatch()
{
    auto* view = dynamic_cast<CViewBasePlacement*>(findObject(getAttrString("placement-match")));
    return view ? view->area_.get() : nullptr;
}

CError CViewBasePlacement::attrPlacement()
{
    const CString text = getAttrString("placement");
    const std::optional<CPlacement> placement = parsePlacement(text);
    if (!placement) {
        QEL_FAIL(getFullName(), "@qelstr_CViewBasePlacement_attrPlacement_Invalid Invalid placement '%1'.",
                 text);
    }
    if (!area_) {
        return {};
    }
    if (*placement == CPlacement::kMatch) {
        if (!findMatch()) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CViewBasePlacement_attrPlacement_InvalidMatch Invalid match '%1'.",
                     getAttrString("placement-match"));
        }
        area_->setMatchFinder([this] { return findMatch(); });
    }
    if (*placement >= CPlacement::kScrollerH && parentView_ && !parentView_->isScrollable_) {
        trace("Invalid placement " + CString::number(static_cast<int>(*placement)) +
                  ", parent view does not support scrolling",
              getFullName());
    }
    return area_->setPlacement(*placement);
}

} // namespace qel
