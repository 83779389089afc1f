// Where the parts of a scroll bar lie.
#pragma once

namespace qel {

// One axis, in pixels from the start of the bar's view.
struct ScrollerParts
{
    double button = 0.0; // length of each of the two buttons; the second ends at `length`
    double length = 0.0;
    double barStart = 0.0;
    double barLength = 0.0;

    double trackStart() const { return button; }
    double trackLength() const { return length - 2.0 * button; }
    double barEnd() const { return barStart + barLength; }
    // How far the bar can move.
    double travel() const { return trackLength() - barLength; }
};

// `ratio` is the part of the content that is shown, `offset` where it begins in the content, so at most
// 1 - ratio. A bar is never shorter than `minBar`, but for a track that is.
ScrollerParts layoutScroller(double length, double button, double minBar, double ratio, double offset);

// The offset at which the bar of these parts would begin at `barStart`, within its bounds.
double scrollerOffsetAt(const ScrollerParts& parts, double barStart, double ratio);

} // namespace qel
