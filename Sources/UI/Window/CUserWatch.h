// Notices that the user is elsewhere.
#pragma once

namespace qel {

class CWindowSystem;

// Asked again and again, tells when the user has pressed a button outside all windows of the interface, or
// has turned to another program: nothing is grabbed, so no event says so. The tree's thread.
class CUserWatch
{
public:
    // A press that is going on is none to notice.
    void start(bool isButtonDown);
    // Whether it has happened since it was asked last.
    bool hasLeft(const CWindowSystem& system);

private:
    bool wasButtonDown_ = false;
    bool wasActive_ = false;
};

} // namespace qel
