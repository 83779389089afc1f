// What all views have in common: their place in the window.
#include "CViewBasePlacement.h"

#include "CInterfaceScale.h"
#include "NumberSyntax.h"
#include "Trace.h"

#include <algorithm>
#include <limits>

namespace qel {

namespace {

constexpr double kMinRatio = 0.0001;

// Attributes whose text is parsed when it changes, and not kept a second time. Where there are two, they are
// those of x and y.
constexpr const char* kAlignment[] = {"alignment-h", "alignment-v"};
constexpr const char* kInlineAlignment[] = {"inline-alignment-h", "inline-alignment-v"};
constexpr const char* kSize[] = {"width", "height"};
constexpr const char* kMinSize[] = {"min-width", "min-height"};
constexpr const char* kCompactSize[] = {"compact-width", "compact-height"};
constexpr const char* kScrollerSize[] = {"scroller-width", "scroller-height"};
constexpr const char* kInnerBorder = "inner-border";
constexpr const char* kOuterBorder = "outer-border";
constexpr const char* kSpread = "spread";
constexpr const char* kPlacement = "placement";
constexpr const char* kPlacementMatch = "placement-match";
constexpr const char* kZIndex = "z-index";

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
    info.handle<&Self::attrAlignmentH>(kAlignment[0]);
    info.handle<&Self::attrAlignmentV>(kAlignment[1]);
    info.handle<&Self::attrCompactWidth>(kCompactSize[0]);
    info.handle<&Self::attrCompactHeight>(kCompactSize[1]);
    info.handle<&Self::attrInlineAlignmentH>(kInlineAlignment[0]);
    info.handle<&Self::attrInlineAlignmentV>(kInlineAlignment[1]);
    info.handle<&Self::attrInnerBorder>(kInnerBorder);
    info.bind<&Self::isDisabled_, &Self::attrIsDisabled>("is-disabled", false);
    info.bind<&Self::isInlineVertical_, &Self::attrIsInlineVertical>("is-inline-vertical", false);
    info.bind<&Self::isNewInlineRow_, &Self::attrIsNewInlineRow>("is-new-inline-row", false);
    info.bind<&Self::isVisible_, &Self::attrIsVisible>("is-visible", true);
    info.bind<&Self::minRatioX_, &Self::attrMinRatioX>("min-ratio-x", kMinRatio);
    info.bind<&Self::minRatioY_, &Self::attrMinRatioY>("min-ratio-y", kMinRatio);
    info.handle<&Self::attrMinWidth>(kMinSize[0]);
    info.handle<&Self::attrMinHeight>(kMinSize[1]);
    info.bind<&Self::offsetX_, &Self::attrOffsetX>("offset-x", 0.0);
    info.bind<&Self::offsetY_, &Self::attrOffsetY>("offset-y", 0.0);
    info.handle<&Self::attrOuterBorder>(kOuterBorder);
    info.handle<&Self::attrPlacement>(kPlacement);
    info.bind<&Self::ratioX_, &Self::attrRatioX>("ratio-x", 1.0);
    info.bind<&Self::ratioY_, &Self::attrRatioY>("ratio-y", 1.0);
    info.handle<&Self::attrScrollerWidth>(kScrollerSize[0]);
    info.handle<&Self::attrScrollerHeight>(kScrollerSize[1]);
    info.handle<&Self::attrSpread>(kSpread);
    info.handle<&Self::attrWidth>(kSize[0]);
    info.handle<&Self::attrHeight>(kSize[1]);

    info.bind<&Self::isRootWanted_>("is-root-view", false);
    info.bind<&Self::isScrollable_>("is-scrollable", false);
    info.bind<&Self::isDecorative_>("is-decorative", false);
    info.bind<&Self::isDynamicWanted_>("is-dynamic", false);
    info.bind<&Self::isForceNonDynamic_>("is-force-non-dynamic", false);
    info.bind<&Self::unclipLevel_>("unclip-level", 0);
    info.bind<&Self::zIndexOfDynamicChilds_>("z-index-dynamic-childs", 0);
    info.bind<&Self::zIndexOfStaticChilds_>("z-index-static-childs", 0);
}

CViewBasePlacement::CViewBasePlacement() = default;
CViewBasePlacement::~CViewBasePlacement() = default;

CError CViewBasePlacement::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(initParents(), getFullName());
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
    options.unclipLevel = unclipLevel_;
    area_ = std::make_unique<CViewArea>(context, options);
    QEL_TRY(area_->init(), getFullName());
    return {};
}

// The children are gone by now. A view that is held beyond its release must not look for its window's layout
// when it ends.
void CViewBasePlacement::detach()
{
    CObject::detach();
    area_.reset();
}

CError CViewBasePlacement::initParents()
{
    if (isRootWanted_ || isAlwaysRoot()) {
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
    isDynamic_ = (isDynamicWanted_ || (parentView_ && parentView_->isDynamic_)) && !isForceNonDynamic_;

    const CString place = getAttrString(kZIndex);
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

// --- attributes

CError CViewBasePlacement::readAlignment(const char* name, CAxis axis, std::optional<CAlignment>& out) const
{
    if (!findAttr(name)) {
        out = CAlignment::kStart;
        return {};
    }
    const CString text = getAttrString(name);
    out = parseAlignment(text, axis);
    if (!out) {
        QEL_FAIL(getFullName(),
                 CString("@qelstr_CViewBasePlacement_readAlignment_Invalid Invalid ") + name + " '%1'.",
                 text);
    }
    return {};
}

CError CViewBasePlacement::setAlignment(CAxis axis)
{
    std::optional<CAlignment> alignment;
    QEL_TRY(readAlignment(kAlignment[indexOf(axis)], axis, alignment), {});
    if (area_) {
        area_->setAlignment(axis, *alignment);
    }
    return {};
}

CError CViewBasePlacement::setInlineAlignment(CAxis axis)
{
    std::optional<CAlignment> alignment;
    QEL_TRY(readAlignment(kInlineAlignment[indexOf(axis)], axis, alignment), {});
    if (area_) {
        area_->setInlineAlignment(axis, *alignment);
    }
    return {};
}

CError CViewBasePlacement::setSize(CAxis axis)
{
    const CAttrValue* const text = findAttr(kSize[indexOf(axis)]);
    const CViewSize size = text ? parseViewSize(text->toString(), interfaceScale_) : CViewSize();
    return area_ ? area_->setSize(axis, size) : CError();
}

CError CViewBasePlacement::setMinSize(CAxis axis)
{
    const CViewSize size = parseMinSize(getAttrString(kMinSize[indexOf(axis)]), interfaceScale_);
    return area_ ? area_->setMinSize(axis, size) : CError();
}

CError CViewBasePlacement::setCompactSize(CAxis axis)
{
    const CString text = getAttrString(kCompactSize[indexOf(axis)]);
    if (area_ && text.isEmpty()) {
        area_->setCompactSize(axis, std::nullopt);
    } else if (area_) {
        area_->setCompactSize(axis, parsePixels(text, interfaceScale_));
    }
    return {};
}

CError CViewBasePlacement::setScrollerSize(CAxis axis)
{
    if (area_) {
        const CString text = getAttrString(kScrollerSize[indexOf(axis)]);
        area_->setScrollerSize(axis, parsePixels(text, interfaceScale_));
    }
    return {};
}

CError CViewBasePlacement::setZoom(CAxis axis)
{
    const double ratio = axis == CAxis::kX ? ratioX_ : ratioY_;
    const double least = axis == CAxis::kX ? minRatioX_ : minRatioY_;
    if (area_) {
        area_->setZoom(axis, std::max({ratio, least, kMinRatio}));
    }
    return {};
}

CViewBorder CViewBasePlacement::readBorder(const char* name, bool isRounded) const
{
    return parseBorder(getAttrString(name), interfaceScale_, isRounded, getFullName());
}

CError CViewBasePlacement::attrInnerBorder()
{
    if (area_) {
        area_->setInnerBorder(readBorder(kInnerBorder, true));
    }
    return {};
}

CError CViewBasePlacement::attrOuterBorder()
{
    if (area_) {
        area_->setOuterBorder(readBorder(kOuterBorder, true));
    }
    return {};
}

CError CViewBasePlacement::attrSpread()
{
    if (area_) {
        area_->setSpread(readBorder(kSpread, false));
    }
    return {};
}

CError CViewBasePlacement::attrIsInlineVertical()
{
    if (area_) {
        area_->setInlineVertical(isInlineVertical_);
    }
    return {};
}

CError CViewBasePlacement::attrIsNewInlineRow()
{
    if (area_) {
        area_->setNewInlineRow(isNewInlineRow_);
    }
    return {};
}

CError CViewBasePlacement::attrIsVisible()
{
    if (area_) {
        area_->setVisible(isVisible_);
    }
    return {};
}

CError CViewBasePlacement::attrOffsetX()
{
    if (area_) {
        area_->setScroll(CAxis::kX, offsetX_);
    }
    return {};
}

CError CViewBasePlacement::attrOffsetY()
{
    if (area_) {
        area_->setScroll(CAxis::kY, offsetY_);
    }
    return {};
}

CViewArea* CViewBasePlacement::findMatch()
{
    auto* view = dynamic_cast<CViewBasePlacement*>(findObject(getAttrString(kPlacementMatch)));
    return view ? view->area_.get() : nullptr;
}

CError CViewBasePlacement::attrPlacement()
{
    const CString text = getAttrString(kPlacement, "inline");
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
                     getAttrString(kPlacementMatch));
        }
        area_->setMatchFinder([this] { return findMatch(); });
    }
    if (*placement >= CPlacement::kScrollerH && parentView_ && !parentView_->isScrollable()) {
        trace("Invalid placement " + CString::number(static_cast<int>(*placement)) +
                  ", parent view does not support scrolling",
              getFullName());
    }
    return area_->setPlacement(*placement);
}

} // namespace qel
