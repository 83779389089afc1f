// The window of an effect, as the binary interface drives it.
#pragma once

#include "Vst24.h"

class AudioEffect;

// A key as a host passes it on.
struct VstKeyCode
{
    std::int32_t character = 0;
    std::uint8_t virtualKey = 0;
    std::uint8_t modifiers = 0;
};

// Owned by the effect it is set on (AudioEffect::setEditor()), which then tells the host that there is one.
// All calls come in the host's UI thread. idle() may come before open() returns, seldom, or not for seconds;
// the parent window may be gone before close().
class AEffEditor
{
public:
    explicit AEffEditor(AudioEffect* effect) : effect_(effect) {}
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;
    virtual ~AEffEditor() = default;

    virtual AudioEffect* getEffect() { return effect_; }
    // Gives the rectangle, which stays the editor's own.
    virtual bool getRect(ERect** rect)
    {
        *rect = nullptr;
        return false;
    }
    // `parent`: native handle of the window to live in; on X11 its number.
    virtual bool open(void* parent)
    {
        parent_ = parent;
        return false;
    }
    virtual void close() { parent_ = nullptr; }
    virtual bool isOpen() { return parent_ != nullptr; }
    virtual void idle() {}
    // True: the key was for the editor.
    virtual bool onKeyDown(const VstKeyCode&) { return false; }
    virtual bool onKeyUp(const VstKeyCode&) { return false; }
    virtual bool onWheel(float) { return false; }
    virtual bool setKnobMode(std::int32_t) { return false; }

protected:
    AudioEffect* effect_;
    void* parent_ = nullptr;
};
