// The root of a window.
#pragma once

#include "CView.h"
#include "FramePieces.h"

namespace qel {

// Tag `ui:window-drag`. Always a root view, wherever in the tree it stands. Draws a frame from its image set,
// and fills the rest with nothing: the views in it cover it.
class CWinDrag : public CView
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    CError attrImageSet() override;
    void draw(CDrawContext& context) override;

protected:
    bool isAlwaysRoot() const override { return true; }
    void updateClips() override;

private:
    std::array<FramePiece, kFramePieces> frame_;
};

} // namespace qel
