// The banks that come with the plug-in.
#include "FactoryBanks.h"

#include "CCriticalSection.h"
#include "Streams/ResourceMap.h"

#include <algorithm>
#include <vector>

namespace qel {

namespace {

// A bank and the bytes it was read from.
struct ReadBank
{
    CByteBuffer bytes;
    std::shared_ptr<const CAudioPresetBank> bank;
};

} // namespace

std::shared_ptr<const CAudioPresetBank> loadFactoryBank(const CString& file)
{
    static CCriticalSection section;
    static std::vector<ReadBank> banks;
    const CLock lock(section);
    const auto resource = findResource(file);
    const CByteBuffer bytes = resource ? CByteBuffer(*resource) : CByteBuffer();
    const auto known =
        std::ranges::find_if(banks, [&](const ReadBank& each) { return resource && each.bytes == bytes; });
    if (known != banks.end()) {
        return known->bank;
    }
    auto bank = std::make_shared<CAudioPresetBank>();
    if (!file.isEmpty()) {
        traceError(bank->loadFile(file));
    }
    bank->setName("Factory ROM");
    if (resource) {
        banks.push_back({bytes, bank});
    }
    return bank;
}

} // namespace qel
