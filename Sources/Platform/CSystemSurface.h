// A bitmap that the window system can copy to a window.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qel::platform {

// 32 bits a pixel: blue, green, red, unused; rows top down. The memory belongs to the surface, is zero at
// first, keeps its address, and outlives the display if need be. Made by CSystemDisplay::createSurface(), one
// for each sector: they are cheap, since on Linux many share one block of shared memory.
//
// The system may read the pixels after CSystemWindow::present() has returned, until the display's
// isFrameUnderWay() turns false. Who paints meanwhile risks no more than a picture that is torn for one
// frame: what was painted over is dirty, and so will be presented again.
class CSystemSurface
{
public:
    virtual ~CSystemSurface() = default;

    std::uint8_t* pixels() const { return pixels_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int pitch() const { return width_ * kBytesPerPixel; } // bytes a row

    static constexpr int kBytesPerPixel = 4;

protected:
    CSystemSurface(int width, int height) : width_(width), height_(height) {}
    CSystemSurface(const CSystemSurface&) = delete;
    CSystemSurface& operator=(const CSystemSurface&) = delete;

    std::uint8_t* pixels_ = nullptr;

private:
    const int width_;
    const int height_;
};

// The call that failed; the names are those of Windows, elsewhere all failures are of the section.
enum class SurfaceStep
{
    kNone,
    kCompatibleDc,
    kDibSection,
    kSelectObject,
};

} // namespace qel::platform
