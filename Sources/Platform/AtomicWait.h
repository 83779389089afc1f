// Sleeping until a number changes.
#pragma once

#include <atomic>
#include <cstdint>

namespace qel::platform {

// Returns once `number` is not `value`, after a change that wakeAll() followed. Takes the place of the
// number's own wait(), which on Windows sleeps through a change that comes just before it falls asleep.
void waitWhile(const std::atomic<std::uint32_t>& number, std::uint32_t value);

// Wakes whoever waits for the number to change. Cheap, no system call, where nobody does.
void wakeAll(std::atomic<std::uint32_t>& number);

} // namespace qel::platform
