// A click by resting the pointer.
#pragma once

namespace qel {

// Is due once for each rest of the pointer. Times in seconds.
class CAutoClick
{
public:
    // The pointer has moved.
    void restart(double nowSec)
    {
        restingSinceSec_ = nowSec;
        isDue_ = true;
    }
    // True once when it has rested for that long.
    bool take(double nowSec, double timeoutSec)
    {
        const bool isTaken = isDue_ && nowSec - restingSinceSec_ >= timeoutSec - kToleranceSec;
        isDue_ = isDue_ && !isTaken;
        return isTaken;
    }

private:
    static constexpr double kToleranceSec = 1e-6; // of a clock that adds up small steps

    double restingSinceSec_ = 0.0;
    bool isDue_ = false;
};

} // namespace qel
