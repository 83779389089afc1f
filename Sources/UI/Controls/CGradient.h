// The light on a panel.
#pragma once

#include "CPicture.h"
#include "CShadeRamp.h"

#include <memory>

namespace qel {

// Tag `ui:overlay-gradient`. Runs through the colour of slot 0, from its brightest shade at the top of the
// view to its darkest at the bottom. The template lets it repeat across. Has no size of its own.
class CGradient : public CPicture
{
public:
    static void buildClassInfo(CClassInfo& info) { CPicture::buildClassInfo(info); }

protected:
    const CImage* getImage() const override { return ramp_ ? &ramp_->getImage() : nullptr; }
    void adoptImageSize(CAxis) override {}
    void updateClips() override;

private:
    std::shared_ptr<const CShadeRamp> ramp_;
};

} // namespace qel
