// One image.
#include "CPicture.h"

#include <utility>

namespace qel {

namespace {

constexpr std::size_t kContentClip = 2; // where the image is aligned
constexpr std::size_t kImageClip = 3;   // what is seen of it

} // namespace

void CPicture::buildClassInfo(CClassInfo& info)
{
    using Self = CPicture;
    CView::buildClassInfo(info);
    info.bind<&Self::index_, &Self::attrImage>("image-set-index", 0);
    info.bind<&Self::alignmentH_, &Self::attrAlignment>("pic-alignment-h", "left");
    info.bind<&Self::alignmentV_, &Self::attrAlignment>("pic-alignment-v", "top");
    info.bind<&Self::crop_, &Self::attrImage>("crop", "");
}

CPicture::CPicture()
{
    allocateClips(kImageClip);
}

CError CPicture::init()
{
    QEL_TRY(CView::init(), getFullName());
    adoptImage();
    return {};
}

// --- attributes

CError CPicture::attrImage()
{
    if (isUp()) {
        adoptImage();
    }
    return {};
}

void CPicture::adoptImage()
{
    cropPx_ = parseBorder(crop_, getInterfaceScale(), true, getFullName());
    adoptImageSize(CAxis::kX);
    adoptImageSize(CAxis::kY);
    placeImage();
}

void CPicture::placeImage()
{
    updateClips();
    markLook();
}

CError CPicture::attrAlignment()
{
    const std::pair<CAxis, const CString*> sides[] = {{CAxis::kX, &alignmentH_}, {CAxis::kY, &alignmentV_}};
    for (const auto& [axis, text] : sides) {
        const std::optional<CAlignment> alignment = parseAlignment(*text, axis);
        if (!alignment) {
            QEL_FAIL(getFullName(), "@qelstr_CPicture_attrAlignment_Invalid Invalid picture alignment '%1'.",
                     *text);
        }
        alignment_[static_cast<std::size_t>(axis)] = *alignment;
    }
    if (isUp()) {
        placeImage();
    }
    return {};
}

CError CPicture::attrCompactWidth()
{
    QEL_TRY(CView::attrCompactWidth(), getFullName());
    if (isUp()) {
        adoptImageSize(CAxis::kX);
    }
    return {};
}

CError CPicture::attrCompactHeight()
{
    QEL_TRY(CView::attrCompactHeight(), getFullName());
    if (isUp()) {
        adoptImageSize(CAxis::kY);
    }
    return {};
}

CError CPicture::attrInnerBorder()
{
    QEL_TRY(CView::attrInnerBorder(), getFullName());
    if (isUp()) {
        placeImage();
    }
    return {};
}

void CPicture::onLookChanged()
{
    CView::onLookChanged();
    if (isUp()) {
        adoptImage();
    }
}

void CPicture::adoptImageSize(CAxis axis)
{
    const bool isX = axis == CAxis::kX;
    const CImage* const image = getImage();
    if (!image || !getAttrString(isX ? "compact-width" : "compact-height").isEmpty()) {
        return;
    }
    const double cropped = isCropping() ? cropPx_.before(axis) + cropPx_.after(axis) : 0.0;
    getViewArea().setCompactSize(axis,
                                 std::max(0.0, (isX ? image->getWidth() : image->getHeight()) - cropped));
}

// --- drawing

// Of the part that is not cut off, relative to the view.
CRect CPicture::placeOf(const CImage& image) const
{
    const CViewBorder crop = isCropping() ? cropPx_ : CViewBorder();
    return alignInClip(*this, kContentClip,
                       image.getWidth() - roundToPixel(crop.left) - roundToPixel(crop.right),
                       image.getHeight() - roundToPixel(crop.top) - roundToPixel(crop.bottom),
                       static_cast<std::int32_t>(alignment_[0]), static_cast<std::int32_t>(alignment_[1]));
}

void CPicture::updateClips()
{
    CView::updateClips();
    using Var = CViewArea::Var;
    const CViewArea& area = getViewArea();
    const auto inner = [&](Var side, CAxis axis) { return static_cast<double>(area.getValue(side, axis)); };
    const double left = inner(Var::kInnerBefore, CAxis::kX);
    const double top = inner(Var::kInnerBefore, CAxis::kY);
    const CRect& whole = getArea();
    const CRect content{whole.x + left, whole.y + top,
                        whole.width - left - inner(Var::kInnerAfter, CAxis::kX),
                        whole.height - top - inner(Var::kInnerAfter, CAxis::kY)};
    setClip(kContentClip, content);
    const CImage* const image = getImage();
    setClip(kImageClip, image && isCropping()
                            ? placeOf(*image).movedBy(whole.x, whole.y).intersectedWith(content)
                            : content);
}

void CPicture::draw(CDrawContext& context)
{
    const CImage* const image = getImage();
    if (!image) {
        return;
    }
    const CRect place = placeOf(*image);
    const CPoint corner =
        isCropping() ? CPoint{place.x - cropPx_.left, place.y - cropPx_.top} : CPoint{place.x, place.y};
    context.drawImage(image, corner, kImageClip, 1.0, isTilingX(), isTilingY());
}

} // namespace qel
