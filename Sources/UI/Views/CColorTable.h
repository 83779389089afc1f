// The colours of a view.
#pragma once

#include "CPalette.h"

#include <memory>
#include <vector>

namespace qel {

// Rows are colour states, in the order in which they were first seen; columns are slots. An entry is the
// palette's colour base + "_" + state, or base alone in the empty state. Colours are looked up again when the
// palette, a name or the position of animated colours has changed, at the next use; that allocates nothing.
// A fault shows as a wrong colour and is traced. Window's thread.
class CColorTable
{
public:
    // At least one slot.
    explicit CColorTable(std::size_t slotCount = 1);

    // Makes room for this slot, too.
    void addSlot(std::size_t slot);
    // The base name of a slot that there is; an empty one means that of slot 0.
    void setSlotName(std::size_t slot, const CString& name);
    // The row of a colour state.
    std::size_t addState(const CString& state);

    // Null for none: then every colour is shades of grey.
    void setPalette(std::shared_ptr<const CPalette> palette);
    const std::shared_ptr<const CPalette>& getPalette() const { return palette_; }
    // Of animated colours, 0 to 1.
    void setPosition(double position);

    // Never null; good until the palette changes.
    const CPaletteColor* getColor(std::size_t row, std::size_t slot);
    // What disabled views draw with, and their text.
    const CPaletteColor* getDisabledColor() const;
    const CPaletteColor* getDisabledTextColor() const;

private:
    void rename();
    void rebuild();
    const CPaletteColor* fallback() const;

    std::shared_ptr<const CPalette> palette_;
    double position_ = 0.0;
    bool isOutdated_ = true;
    std::vector<CString> names_;      // base names by slot
    std::vector<CString> states_;     // by row
    std::vector<CString> colorNames_; // row * slots + slot, as the next
    std::vector<const CPaletteColor*> colors_;
};

} // namespace qel
