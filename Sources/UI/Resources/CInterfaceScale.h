// The factor of all sizes in the interface.
#pragma once

namespace qel {

// 1.0 is the design size; the interface offers 0.8, 1.0 and 1.25. A window takes the scale that stands when
// it is built and keeps it. One for all that is built on a thread, so that two hosts' threads that open
// editors at once keep out of each other's way.
class CInterfaceScale
{
public:
    // Another scale for what is built as long as it lives, as for a window that belongs to an older one.
    class CScope
    {
    public:
        explicit CScope(double scale) : before_(get()) { set(scale); }
        CScope(const CScope&) = delete;
        CScope& operator=(const CScope&) = delete;
        ~CScope() { set(before_); }

    private:
        const double before_;
    };

    static double get();
    static void set(double scale);
    // Reads the stored setting "ui-scale" anew, for an editor that is about to open; without an application,
    // or with a setting that is no usable number, it is 1.0. Loads a file at the first call.
    static void readSetting();
};

} // namespace qel
