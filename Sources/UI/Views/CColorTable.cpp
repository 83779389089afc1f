// The colours of a view.
#include "CColorTable.h"

#include "Trace.h"

#include <algorithm>

namespace qel {

namespace {

const CPalette& emptyPalette()
{
    static const CPalette palette;
    return palette;
}

void traceIndex(const char* text, std::size_t index)
{
    if (isTracing()) {
        trace(text + CString::number(static_cast<std::int64_t>(index)));
    }
}

} // namespace

CColorTable::CColorTable(std::size_t slotCount) : names_(std::max<std::size_t>(slotCount, 1)) {}

void CColorTable::addSlot(std::size_t slot)
{
    if (slot >= names_.size()) {
        names_.resize(slot + 1);
        rename();
    }
}

void CColorTable::setSlotName(std::size_t slot, const CString& name)
{
    if (slot < names_.size() && !(names_[slot] == name)) {
        names_[slot] = name;
        rename();
    }
}

std::size_t CColorTable::addState(const CString& state)
{
    const auto found = std::ranges::find(states_, state);
    if (found != states_.end()) {
        return static_cast<std::size_t>(found - states_.begin());
    }
    states_.push_back(state);
    rename();
    return states_.size() - 1;
}

void CColorTable::setPalette(std::shared_ptr<const CPalette> palette)
{
    if (palette != palette_) {
        palette_ = std::move(palette);
        isOutdated_ = true;
    }
}

void CColorTable::setPosition(double position)
{
    position_ = position;
    isOutdated_ = true;
}

// Here and not while drawing, since it allocates.
void CColorTable::rename()
{
    colorNames_.clear();
    for (const CString& state : states_) {
        for (const CString& slotName : names_) {
            CString name = slotName.isEmpty() ? names_[0] : slotName;
            if (!name.isEmpty() && !state.isEmpty()) {
                name += "_" + state;
            }
            colorNames_.push_back(std::move(name));
        }
    }
    colors_.resize(colorNames_.size());
    isOutdated_ = true;
}

void CColorTable::rebuild()
{
    isOutdated_ = false;
    if (!palette_) {
        trace("PALETTE IS NULL");
    }
    for (std::size_t i = 0; i < colors_.size(); ++i) {
        const bool isKnown = palette_ && !colorNames_[i].isEmpty();
        colors_[i] = isKnown ? palette_->findColor(colorNames_[i], position_) : fallback();
    }
}

const CPaletteColor* CColorTable::fallback() const
{
    return palette_ ? &palette_->getFallback() : &emptyPalette().getFallback();
}

const CPaletteColor* CColorTable::getColor(std::size_t row, std::size_t slot)
{
    if (isOutdated_) {
        rebuild();
    }
    if (row >= states_.size()) {
        traceIndex("WRONG COLOR INDEX ", row);
        return fallback();
    }
    if (slot >= names_.size()) {
        traceIndex("WRONG SLOT INDEX ", slot);
        return fallback();
    }
    return colors_[row * names_.size() + slot];
}

const CPaletteColor* CColorTable::getDisabledColor() const
{
    return palette_ ? palette_->findColor("Disabled") : fallback();
}

const CPaletteColor* CColorTable::getDisabledTextColor() const
{
    return palette_ ? palette_->findColor("DisabledText") : fallback();
}

} // namespace qel
