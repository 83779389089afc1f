// The kernels of the process, by name.
#include "CKernelRegistry.h"

#include <algorithm>

namespace qel {

namespace {

std::size_t bucketOf(std::string_view name)
{
    std::uint32_t hash = 5555;
    for (const char c : name) {
        hash = hash * 33 + static_cast<std::uint32_t>(static_cast<signed char>(c));
    }
    return hash & 0x3FF;
}

} // namespace

CKernelRegistry& CKernelRegistry::get()
{
    static CKernelRegistry registry;
    return registry;
}

CKernelRegistry::CKernelRegistry()
{
    for (std::atomic<std::int32_t>& head : heads_) {
        head.store(-1, std::memory_order_relaxed);
    }
}

int CKernelRegistry::add(std::string_view name, CKernelFunction function, int operandCount,
                         std::uint32_t writeMask)
{
    return add(name, CKernelDef{nullptr, function, operandCount, writeMask});
}

int CKernelRegistry::add(std::string_view name, const CKernelDef& kernel)
{
    if (!kernel.function || kernel.operandCount < 0 ||
        kernel.operandCount > static_cast<int>(kMaxKernelOperands)) {
        return -1;
    }
    const std::string_view kept = name.substr(0, CKernelEntry::kMaxNameLength);
    if (const int existing = find(kept); existing >= 0) {
        return checkKnown(existing, kernel);
    }
    const CLock lock(lock_);
    if (const int existing = find(kept); existing >= 0) {
        return checkKnown(existing, kernel);
    }
    const std::uint32_t index = size_.load(std::memory_order_relaxed);
    if (index == kMaxKernels) {
        return -1;
    }
    CKernelEntry& added = entries_[index];
    *std::copy(kept.begin(), kept.end(), added.name) = '\0';
    added.function = kernel.function;
    added.operandCount = kernel.operandCount;
    added.writeMask = kernel.writeMask;
    added.pair = kernel.pair;
    added.quad = kernel.quad;
    added.joins = kernel.joins;
    std::atomic<std::int32_t>& head = heads_[bucketOf(kept)];
    added.next = head.load(std::memory_order_relaxed);
    size_.store(index + 1, std::memory_order_release);
    head.store(static_cast<std::int32_t>(index), std::memory_order_release);
    return static_cast<int>(index);
}

int CKernelRegistry::checkKnown(int existing, const CKernelDef& kernel) const
{
    const CKernelEntry& known = entries_[static_cast<std::size_t>(existing)];
    const bool isSame = known.function == kernel.function && known.operandCount == kernel.operandCount &&
                        known.writeMask == kernel.writeMask;
    return isSame ? existing : -1;
}

int CKernelRegistry::find(std::string_view name) const
{
    std::int32_t index = heads_[bucketOf(name)].load(std::memory_order_acquire);
    while (index >= 0 && name != entries_[static_cast<std::size_t>(index)].name) {
        index = entries_[static_cast<std::size_t>(index)].next;
    }
    return index;
}

} // namespace qel
