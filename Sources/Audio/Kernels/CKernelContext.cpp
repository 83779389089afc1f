// The engine of one plug-in instance that runs all signal arithmetic.
#include "CKernelContext.h"

#include <algorithm>

namespace qel {

namespace {

// A short name with its prefix, cut where the registry cuts.
struct FullName
{
    explicit FullName(std::string_view shortName)
    {
        const std::size_t room = sizeof text - CKernelContext::kNamePrefix.size();
        char* end = std::copy(CKernelContext::kNamePrefix.begin(), CKernelContext::kNamePrefix.end(), text);
        end = std::copy_n(shortName.begin(), std::min(shortName.size(), room), end);
        length = static_cast<std::size_t>(end - text);
    }
    std::string_view view() const { return {text, length}; }

    char text[CKernelEntry::kMaxNameLength];
    std::size_t length;
};

} // namespace

CKernelContext::CKernelContext() : known_(registerWellKnownKernels(*this)) {}

int CKernelContext::addKernel(std::string_view name, CKernelFunction function, int operandCount,
                              std::uint32_t writeMask)
{
    return registry_.add(name, function, operandCount, writeMask);
}

int CKernelContext::addKernel(const CKernelDef& kernel)
{
    return registry_.add(FullName(kernel.name).view(), kernel);
}

void CKernelContext::addKernels(std::span<const CKernelDef> kernels)
{
    for (const CKernelDef& kernel : kernels) {
        addKernel(kernel);
    }
}

int CKernelContext::findShortName(std::string_view name) const
{
    return registry_.find(FullName(name).view());
}

const CFilterKernels& CKernelContext::filterKernels(int kind) const
{
    const bool isFamily = kind >= 0 && kind < static_cast<int>(kFilterFamilies);
    return known_[isFamily ? static_cast<EFilterFamily>(kind) : EFilterFamily::kFree];
}

void CKernelContext::submit(int kernelId, std::uint32_t count, double scalar,
                            std::span<const CBufferRef> operands)
{
    const CKernelEntry* entry = registry_.entry(kernelId);
    if (!entry || operands.size() != static_cast<std::size_t>(entry->operandCount)) {
        ++refusedCalls_;
        return;
    }
    CKernelCall call;
    call.kernelId = kernelId;
    call.count = count;
    call.entry = entry;
    call.scalar = scalar;
    std::size_t index = 0;
    for (const CBufferRef ref : operands) {
        std::byte* address = pool_.address(ref);
        if (!address) {
            ++refusedCalls_;
            return;
        }
        call.operandBits[index] = ref.bits;
        call.data[index] = address;
        ++index;
    }
    if (observer_) {
        observer_->beforeCall(call);
    }
    entry->function(call);
}

} // namespace qel
