// Driver for long, coverage-guided runs with libFuzzer.
#include "FuzzTarget.h"

#include <cstddef>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qel::fuzzOne({data, size});
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

// libFuzzer starts from nothing unless it is given files; now and then an input is replaced by a seed.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed)
{
    static const auto seeds = qel::fuzzSeeds();
    if (seed % 64 == 0) {
        const auto& chosen = seeds[(seed / 64) % seeds.size()];
        if (chosen.size() <= maxSize) {
            std::memcpy(data, chosen.data(), chosen.size());
            size = chosen.size();
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
