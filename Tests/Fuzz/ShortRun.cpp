// Driver for the ordinary tests: damages the seeds in a fixed random order and hands them to the target.
#include "FuzzTarget.h"

#include <cstdlib>
#include <iostream>
#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

// One to four changes: a byte, a small number, a cut, a repeated or a removed stretch.
Bytes damaged(Bytes bytes, std::mt19937& random)
{
    for (unsigned change = 1 + random() % 4; change > 0 && !bytes.empty(); --change) {
        const std::size_t at = random() % bytes.size();
        const std::size_t length = 1 + random() % std::min<std::size_t>(16, bytes.size() - at);
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        switch (random() % 5) {
        case 0:
            *place = static_cast<std::uint8_t>(random());
            break;
        case 1:
            *place = static_cast<std::uint8_t>(random() % 6);
            break;
        case 2:
            bytes.resize(at);
            break;
        case 3: {
            const Bytes stretch(place, place + static_cast<std::ptrdiff_t>(length));
            bytes.insert(place, stretch.begin(), stretch.end());
            break;
        }
        default:
            bytes.erase(place, place + static_cast<std::ptrdiff_t>(length));
        }
    }
    return bytes;
}

} // namespace

// usage: PROGRAM [ROUNDS [SEED]]
int main(int argc, char** argv)
{
    const long rounds = argc > 1 ? std::atol(argv[1]) : 100000;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atol(argv[2])) : 1;
    std::cout << rounds << " rounds, seed " << seed << std::endl;
    std::mt19937 random(seed);
    const std::vector<Bytes> seeds = qel::fuzzSeeds();
    for (const Bytes& bytes : seeds) {
        qel::fuzzOne(bytes);
    }
    for (long i = 0; i < rounds; ++i) {
        const Bytes& bytes = seeds[random() % seeds.size()];
        qel::fuzzOne(damaged(bytes, random));
    }
    std::cout << "survived" << std::endl;
}
