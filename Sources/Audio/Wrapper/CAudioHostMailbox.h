// How control threads tell the audio thread what holds from its next block on.
#pragma once

#include "CAudioHostBlock.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace qel {

// A triple buffer: the last write wins, and neither side ever waits for the other. The number of resets only
// grows, so that a reset is not lost when another order overtakes it. Control threads write one at a time.
class CAudioHostMailbox
{
public:
    struct Order
    {
        CAudioHostSetup setup;
        std::uint32_t resetCount = 0;
    };

    // --- control threads, one at a time
    void put(const Order& order)
    {
        orders_[back_] = order;
        back_ = shared_.exchange(back_ | kNew, std::memory_order_acq_rel) & kPlace;
    }

    // --- audio thread
    // False if nothing has come since the last call.
    bool take(Order& outOrder)
    {
        if (!(shared_.load(std::memory_order_relaxed) & kNew)) {
            return false;
        }
        front_ = shared_.exchange(front_, std::memory_order_acq_rel) & kPlace;
        outOrder = orders_[front_];
        return true;
    }

private:
    static constexpr unsigned kPlace = 3;
    static constexpr unsigned kNew = 4;

    std::array<Order, 3> orders_;
    unsigned back_ = 0;  // the control side's
    unsigned front_ = 1; // the audio side's
    std::atomic<unsigned> shared_{2};
};

} // namespace qel
