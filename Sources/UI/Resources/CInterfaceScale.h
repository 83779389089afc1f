// The factor of all sizes in the interface.
#pragma once

namespace qel {

// One for the whole process: 1.0 is the design size; the interface offers 0.8, 1.0 and 1.25. A window takes
// the scale that stands when it is built and keeps it. Any thread.
class CInterfaceScale
{
public:
    static double get();
    static void set(double scale);
    // Reads the stored setting "ui-scale" anew, for an editor that is about to open; without an application,
    // or with a setting that is no usable number, it is 1.0. Loads a file at the first call.
    static void readSetting();
};

} // namespace qel
