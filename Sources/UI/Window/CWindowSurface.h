// Where the sectors of a window lie, with a window system or without.
#pragma once

#include "COffscreenSurface.h"
#include "CSystemDisplay.h"

#include <memory>
#include <vector>

namespace qel {

// With a display each sector is a bitmap of the system, without one all are parts of one picture in memory.
// Owned by the window.
class CWindowSurface : public CSectorSurface
{
public:
    // Before the first resize(): both null, or both living until detach().
    void attach(platform::CSystemDisplay* display, platform::CSystemWindow* window);
    // The system's window is gone; the memory stays.
    void detach() { window_ = nullptr; }

    CError resize(std::int32_t columns, std::int32_t rows) override;
    Sector getSector(std::int32_t column, std::int32_t row) override;
    void invalidate(const CPixelRect& rect) override;

    // From within the window's paint call: copies this part of the window to the screen.
    void present(const platform::PixelRect& update);

    // The picture without a display; as large as the grid.
    const CLinearBitmap& getPicture() const { return memory_.getPicture(); }
    COffscreenSurface& getMemory() { return memory_; }

private:
    CError makeSectors(std::size_t count);

    platform::CSystemDisplay* display_ = nullptr;
    platform::CSystemWindow* window_ = nullptr;
    COffscreenSurface memory_;
    std::vector<std::unique_ptr<platform::CSystemSurface>> sectors_; // row by row
    std::int32_t columns_ = 0;
    std::int32_t rows_ = 0;
};

} // namespace qel
