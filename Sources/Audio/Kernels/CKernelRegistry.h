// The kernels of the process, by name.
#pragma once

#include "CCriticalSection.h"
#include "CKernelCall.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qel {

// A registered kernel. It, its address and its index in the registry, the kernel identifier, never change.
struct CKernelEntry
{
    static constexpr std::size_t kMaxNameLength = 64;

    char name[kMaxNameLength + 1];
    CKernelFunction function;
    std::int32_t operandCount;
    std::uint32_t writeMask;
    CKernelGroupFunction pair; // as in CKernelDef
    CKernelGroupFunction quad;
    std::span<const CKernelJoin> joins;
    std::int32_t next; // in the hash chain
};

// Up to 512 kernels in a chained hash table, which all contexts share. Filled while graphs are being built;
// look-ups happen once a module and never in a block. Nothing is removed. Names are compared byte by byte.
// Any thread: only who adds what is not there yet takes a lock.
class CKernelRegistry
{
public:
    static constexpr std::size_t kMaxKernels = 512;

    static CKernelRegistry& get();

    CKernelRegistry(const CKernelRegistry&) = delete;
    CKernelRegistry& operator=(const CKernelRegistry&) = delete;

    // Registers under the first 64 characters of `name` and returns the identifier, which is the existing one
    // if the same kernel is there already. -1: more than 8 operands, no function, the name taken by a
    // different kernel, or the table full.
    int add(std::string_view name, CKernelFunction function, int operandCount, std::uint32_t writeMask);
    // The same with all that a table says of the kernel but for its name, which is the full one here.
    int add(std::string_view name, const CKernelDef& kernel);
    // The identifier, or -1. The name is taken whole: one that was cut when added is found by what was kept.
    int find(std::string_view name) const;
    // Null if the identifier is none, -1 included.
    const CKernelEntry* entry(int kernelId) const
    {
        return static_cast<std::uint32_t>(kernelId) < size() ? &entries_[static_cast<std::size_t>(kernelId)]
                                                             : nullptr;
    }
    std::size_t size() const { return size_.load(std::memory_order_acquire); }

private:
    CKernelRegistry();

    int checkKnown(int existing, const CKernelDef& kernel) const;

    CCriticalSection lock_; // guards adding
    std::array<CKernelEntry, kMaxKernels> entries_;
    std::array<std::atomic<std::int32_t>, 1024> heads_;
    std::atomic<std::uint32_t> size_{0};
};

} // namespace qel
