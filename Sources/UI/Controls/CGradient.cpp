// The light on a panel.
#include "CGradient.h"

namespace qel {

void CGradient::updateClips()
{
    const std::int32_t height = roundToPixels(getArea()).height;
    if (height > 0 && (!ramp_ || ramp_->getImage().getHeight() != height)) {
        ramp_ = CShadeRamp::share(height);
    }
    CPicture::updateClips();
}

} // namespace qel
