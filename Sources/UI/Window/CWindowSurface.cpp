// Where the sectors of a window lie, with a window system or without.
#include "CWindowSurface.h"

#include "CViewClip.h"

namespace qel {

namespace {

CError surfaceError(platform::SurfaceStep step, int code)
{
    switch (step) {
    case platform::SurfaceStep::kCompatibleDc:
        QEL_FAIL({}, "@qelstr_CLinearBitmapDC_resize_CreateDC CreateCompatibleDC() execution error %1.",
                 code);
    case platform::SurfaceStep::kSelectObject:
        QEL_FAIL({}, "@qelstr_CLinearBitmapDC_resize_SelectObject SelectObject() error %1.", code);
    default:
        QEL_FAIL({},
                 "@qelstr_CLinearBitmapDC_resize_CreateSection CreateDIBSection() error %1 (width=%2, "
                 "height=%3).",
                 code, kSectorPx, kSectorPx);
    }
}

} // namespace

void CWindowSurface::attach(platform::CSystemDisplay* display, platform::CSystemWindow* window)
{
    display_ = display;
    window_ = window;
}

CError CWindowSurface::resize(std::int32_t columns, std::int32_t rows)
{
    columns_ = columns;
    rows_ = rows;
    if (!display_) {
        return memory_.resize(columns, rows);
    }
    sectors_.clear();
    CError error = makeSectors(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    if (error) {
        sectors_.clear();
        columns_ = rows_ = 0;
    }
    return error;
}

CError CWindowSurface::makeSectors(std::size_t count)
{
    while (sectors_.size() < count) {
        std::unique_ptr<platform::CSystemSurface> sector;
        auto step = platform::SurfaceStep::kNone;
        if (const int code = display_->createSurface(kSectorPx, kSectorPx, sector, step); code != 0) {
            return surfaceError(step, code);
        }
        sectors_.push_back(std::move(sector));
    }
    return {};
}

CSectorSurface::Sector CWindowSurface::getSector(std::int32_t column, std::int32_t row)
{
    if (!display_) {
        return memory_.getSector(column, row);
    }
    const auto& sector = *sectors_[static_cast<std::size_t>(row * columns_ + column)];
    return {sector.pixels(), sector.pitch()};
}

void CWindowSurface::invalidate(const CPixelRect& rect)
{
    if (!display_) {
        memory_.invalidate(rect);
    } else if (window_) {
        window_->invalidate({rect.x, rect.y, rect.width, rect.height});
    }
}

void CWindowSurface::present(const platform::PixelRect& update)
{
    const CPixelRect wanted{update.x, update.y, update.width, update.height};
    for (std::size_t i = 0; window_ && i < sectors_.size(); ++i) {
        const std::int32_t x = static_cast<std::int32_t>(i) % columns_ * kSectorPx;
        const std::int32_t y = static_cast<std::int32_t>(i) / columns_ * kSectorPx;
        const CPixelRect part = wanted.intersectedWith({x, y, kSectorPx, kSectorPx});
        if (!part.isEmpty()) {
            window_->present(*sectors_[i], {part.x - x, part.y - y, part.width, part.height}, part.x, part.y);
        }
    }
}

} // namespace qel
