// What a view is drawn with: colours and images.
#include "CViewBase.h"

#include "CBrushSetObject.h"
#include "CImageSetObject.h"
#include "CPaletteObject.h"
#include "Math/Elementary.h"
#include "Trace.h"
#include "ViewTree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace qel {

namespace {

// No image has more layers than this, and no view needs more slots.
constexpr std::int32_t kMaxSlots = 256;

// Radians a second, over pi squared: animated colours take about a second there and back.
constexpr double kGradientSpeed = 20.0;

} // namespace

void CViewBase::buildClassInfo(CClassInfo& info)
{
    using Self = CViewBase;
    CViewBaseCtlEvents::buildClassInfo(info);
    info.bind<&Self::paletteOwn_, &Self::attrPalette>("palette", "");
    info.bind<&Self::paletteName_, &Self::attrPalette>("palette-name", "");
    info.bind<&Self::color_, &Self::attrColor>("color", "");
    info.bind<&Self::colorSlots_>("color-slots", 1);
    info.bind<&Self::sharedColor_>("shared-color", "");
    info.bind<&Self::imageSetPath_, &Self::attrImageSet>("image-set", "");
    info.bind<&Self::brushSetPath_, &Self::attrBrushSet>("brush-set", "");
    info.bind<&Self::isGradientAnimated_, &Self::attrIsGradientAnimated>("is-gradient-animated", false);
}

CViewBase::CViewBase()
    : colors_(std::make_shared<CColorTable>()), gradientTick_(*this, [this] {
          if (CError error = onGradientTick()) {
              traceError(error);
          }
      })
{}

CError CViewBase::init()
{
    QEL_TRY(CViewBaseCtlEvents::init(), getFullName());
    QEL_TRY(findSharedColor(), getFullName());
    if (hasOwnColors_) {
        colors_->addSlot(static_cast<std::size_t>(std::clamp(colorSlots_, 1, kMaxSlots) - 1));
        colors_->setSlotName(0, color_);
    }
    QEL_TRY(findPalette(), getFullName());
    onLookChanged();
    const auto* above = dynamic_cast<const CViewBase*>(getParentView());
    if (above && above->isGradientAnimated_) {
        QEL_TRY(setAttribute("is-gradient-animated", CAttrValue(true), false), getFullName());
    }
    return {};
}

void CViewBase::release()
{
    gradientTick_.stop();
    CViewBaseCtlEvents::release();
}

// --- colours

CError CViewBase::findSharedColor()
{
    if (sharedColor_.isEmpty()) {
        return {};
    }
    const auto* view = dynamic_cast<const CViewBase*>(findObject(sharedColor_));
    if (!view) {
        QEL_FAIL(getFullName(), "@qelstr_CViewBase_init_NoSharedColor Unable to find shared color.");
    }
    colors_ = view->colors_;
    hasOwnColors_ = false;
    return {};
}

const CPaletteColor* CViewBase::getColor(std::size_t slot)
{
    return actsDisabled() ? colors_->getDisabledColor() : colors_->getColor(side(side_).row, slot);
}

CError CViewBase::attrColor()
{
    setSlotColor(0, color_);
    return {};
}

void CViewBase::setSlotColor(std::size_t slot, const CString& name)
{
    if (hasOwnColors_ && slot < static_cast<std::size_t>(kMaxSlots)) {
        colors_->addSlot(slot);
        colors_->setSlotName(slot, name);
        markLook();
    }
}

CError CViewBase::attrPalette()
{
    return getInitState() == InitState::kCreated || isReleased() ? CError() : updatePalette();
}

CError CViewBase::findPalette()
{
    const CString& name = paletteOwn_.isEmpty() ? paletteName_ : paletteOwn_;
    if (name.isEmpty()) {
        const auto* above = dynamic_cast<const CViewBase*>(getParentView());
        palette_ = above ? above->palette_ : nullptr;
        if (!above) {
            trace("RootColors IS NULL", getFullName());
        }
    } else {
        CObject* found = findObject("pal." + name);
        if (!found) {
            found = findObject("shared::pal." + name);
        }
        if (!found) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CViewBase_updatePalette_NoObject Unable to find palette object '%1'.", name);
        }
        auto* const object = dynamic_cast<CPaletteObject*>(found);
        std::shared_ptr<const CPalette> palette;
        if (object) {
            QEL_TRY(object->getPalette(palette), getFullName());
        }
        if (!palette) {
            QEL_FAIL(
                getFullName(),
                "@qelstr_CViewBase_updatePalette_NoPalette Unable to find palette in palette object '%1'.",
                name);
        }
        palette_ = std::move(palette);
    }
    if (hasOwnColors_) {
        colors_->setPalette(palette_);
    }
    return {};
}

CError CViewBase::updatePalette()
{
    QEL_TRY(findPalette(), getFullName());
    markLook();
    CError first;
    forEachViewBelow<CViewBase>(*this, [&](CViewBase& view) {
        CError error = view.updatePalette();
        if (!first) {
            first = std::move(error);
        }
    });
    return first;
}

// --- animated colours

CError CViewBase::attrIsGradientAnimated()
{
    if (getInitState() == InitState::kCreated || isReleased()) {
        return {};
    }
    if (isGradientAnimated_ && !gradientTick_.isRunning()) {
        gradientStartSec_ = CViewContext::getTimeSec();
        gradientTick_.start(getViewContext().getGradientTimer());
    } else if (!isGradientAnimated_) {
        gradientTick_.stop();
        setPosition(0.0);
    }
    CError first;
    forEachViewBelow<CViewBase>(*this, [&](CViewBase& view) {
        CError error = view.setAttribute("is-gradient-animated", CAttrValue(isGradientAnimated_), true);
        if (!first) {
            first = std::move(error);
        }
    });
    return first;
}

CError CViewBase::onGradientTick()
{
    const double passedSec = CViewContext::getTimeSec() - gradientStartSec_;
    const double angle = passedSec * kGradientSpeed / std::numbers::pi - std::numbers::pi / 2.0;
    setPosition(math::sin(angle) * 0.5 + 0.5);
    return {};
}

void CViewBase::setPosition(double position)
{
    if (std::fabs(position - gradientPosition_) <= std::numeric_limits<double>::epsilon()) {
        return;
    }
    gradientPosition_ = position;
    if (hasOwnColors_) {
        colors_->setPosition(position);
    }
    markLook();
}

// --- images

CError CViewBase::attrImageSet()
{
    std::shared_ptr<const CImageSet> images;
    if (!imageSetPath_.isEmpty()) {
        auto* object = dynamic_cast<CImageSetObject*>(findObject(imageSetPath_));
        if (!object) {
            QEL_FAIL(getFullName(), "@qelstr_CViewBase_attrImageSet_NotFound Image set '%1' not found.",
                     imageSetPath_);
        }
        QEL_TRY(object->getImageSet(getInterfaceScale(), images), getFullName());
    }
    imageSet_ = std::move(images);
    onLookChanged();
    markLook();
    return {};
}

CError CViewBase::attrBrushSet()
{
    std::shared_ptr<const CBrushSet> brushes;
    if (!brushSetPath_.isEmpty()) {
        auto* object = dynamic_cast<CBrushSetObject*>(findObject(brushSetPath_));
        if (!object) {
            QEL_FAIL(getFullName(), "@qelstr_CViewBase_attrBrushSet_NotFound Brush set '%1' not found.",
                     brushSetPath_);
        }
        QEL_TRY(object->getBrushSet(getInterfaceScale(), brushes), getFullName());
    }
    brushSet_ = std::move(brushes);
    markLook();
    return {};
}

CViewBase::Side CViewBase::resolved(const CViewLook& look)
{
    Side side;
    side.row = colors_->addState(look.colorState);
    if (imageSet_) {
        side.range = imageSet_->findRange(look.imageRange);
    }
    return side;
}

void CViewBase::onLookChanged()
{
    sides_[static_cast<std::size_t>(CSectorView::FadeSide::kFrom)] = resolved(getFade().from);
    sides_[static_cast<std::size_t>(CSectorView::FadeSide::kTo)] = resolved(getFade().to);
}

const CImage* CViewBase::findImage(std::uint32_t index, bool isInRange) const
{
    if (!imageSet_) {
        return nullptr;
    }
    const CImageRange range = getImageRange();
    if (!isInRange) {
        return imageSet_->getImage(index);
    }
    return index <= range.last - range.first ? imageSet_->getImage(range.first + index) : nullptr;
}

} // namespace qel
