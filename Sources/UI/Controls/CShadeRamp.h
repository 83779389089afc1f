// An image that runs through all shades of a colour.
#pragma once

#include "CImage.h"

#include <memory>

namespace qel {

// Of value 255 in the first row to 0 in the last, in slot 0; repeats across. A panel's colours lie so close
// together that plain steps would show as bands, so neighbouring pixels alternate between two steps.
class CShadeRamp
{
public:
    explicit CShadeRamp(std::int32_t heightPx);
    CShadeRamp(const CShadeRamp&) = delete;
    CShadeRamp& operator=(const CShadeRamp&) = delete;

    const CImage& getImage() const { return image_; }

    // The one ramp of this height in the process. Any thread.
    static std::shared_ptr<const CShadeRamp> share(std::int32_t heightPx);

private:
    std::vector<std::uint8_t> raster_;
    CImageLayer layer_;
    CImage image_;
};

} // namespace qel
