// A bitmap that GDI can copy from.
#pragma once

#include "CSystemSurface.h"
#include "WindowsApi.h"

namespace qel::platform {

// A top-down section of 32 bits a pixel, selected into a device context of its own.
class CGdiSurface : public CSystemSurface
{
public:
    CGdiSurface(int width, int height) : CSystemSurface(width, height) {}
    ~CGdiSurface() override;

    // Returns 0 or the system's error number, and the step that failed.
    [[nodiscard]] int create(SurfaceStep& outFailed);
    HDC context() const { return context_; }

private:
    HDC context_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ previous_ = nullptr;
};

} // namespace qel::platform
