// What the views of one window share.
#pragma once

#include "COffscreenSurface.h"
#include "CSectorMap.h"
#include "CTickSource.h"

#include <memory>

namespace qel {

class CViewWindow;

// Made by a window's root view and shared by all views in it, so that a view that is held beyond its release
// still finds it. The window joins once it is there: until then views paint into memory, and nothing ticks.
// Window's thread.
class CViewContext : public std::enable_shared_from_this<CViewContext>
{
public:
    CViewContext() : map_(relay_) {}
    CViewContext(const CViewContext&) = delete;
    CViewContext& operator=(const CViewContext&) = delete;

    CSectorMap& getSectorMap() { return map_; }
    // Where sectors lie from the next CSectorMap::resize() on, which the caller does before anything is
    // painted; null for memory that nobody sees.
    void setSurface(CSectorSurface* surface) { relay_.target = surface; }

    // The window, or null.
    CViewWindow* getWindow() const { return window_; }
    void setWindow(CViewWindow* window) { window_ = window; }

    // Each frame: morphs and fades of states, and whatever else moves.
    CTickSource& getTimer() { return timer_; }
    // More seldom: animated colours.
    CTickSource& getGradientTimer() { return gradientTimer_; }
    // The blink of a caret.
    CTickSource& getCursorTimer() { return cursorTimer_; }
    // For the window; handlers may release the whole tree.
    void tickTimer();
    void tickGradientTimer();
    void tickCursorTimer();
    // Time of the present frame, seconds.
    static double getTimeSec();

    // From then on the tree of the window is complete, and views that are made come later.
    bool isContentReady() const { return isContentReady_; }
    void setContentReady() { isContentReady_ = true; }

private:
    // The map keeps one surface for life; this one passes on to whatever is set.
    struct Relay : CSectorSurface
    {
        CError resize(std::int32_t columns, std::int32_t rows) override { return to().resize(columns, rows); }
        Sector getSector(std::int32_t column, std::int32_t row) override
        {
            return to().getSector(column, row);
        }
        void invalidate(const CPixelRect& rect) override { to().invalidate(rect); }
        CSectorSurface& to() { return target ? *target : memory; }

        COffscreenSurface memory;
        CSectorSurface* target = nullptr;
    };

    Relay relay_;
    CSectorMap map_;
    CViewWindow* window_ = nullptr;
    CTickSource timer_;
    CTickSource gradientTimer_;
    CTickSource cursorTimer_;
    bool isContentReady_ = false;
};

} // namespace qel
