// Making and releasing a section.
#include "CGdiSurface.h"

namespace qel::platform {

namespace {

// GDI does not always set a number.
int failure()
{
    const int error = lastError();
    return error ? error : ERROR_NOT_ENOUGH_MEMORY;
}

} // namespace

CGdiSurface::~CGdiSurface()
{
    if (previous_) {
        SelectObject(context_, previous_);
    }
    if (bitmap_) {
        DeleteObject(bitmap_);
    }
    if (context_) {
        DeleteDC(context_);
    }
}

int CGdiSurface::create(SurfaceStep& outFailed)
{
    outFailed = SurfaceStep::kCompatibleDc;
    SetLastError(0);
    context_ = CreateCompatibleDC(nullptr);
    if (!context_) {
        return failure();
    }
    outFailed = SurfaceStep::kDibSection;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width();
    info.bmiHeader.biHeight = -height(); // rows top down
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    bitmap_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (!bitmap_) {
        return failure();
    }
    outFailed = SurfaceStep::kSelectObject;
    previous_ = SelectObject(context_, bitmap_);
    if (!previous_) {
        return failure();
    }
    pixels_ = static_cast<std::uint8_t*>(pixels);
    outFailed = SurfaceStep::kNone;
    return 0;
}

} // namespace qel::platform
