// What every factory program makes of the same music, down to the last bit: projects have to sound as they
// were mixed.
#include "../Presets/ProductFixture.h"
#include "EffectRig.h"

namespace qel::test {
namespace {

class EffectBits : public ProductFixture
{};

// Low noise in beats, by sums and products alone: the library's sine may differ from system to system.
Signal beatingNoise(unsigned seed)
{
    std::minstd_rand random(seed);
    Signal signal(24000);
    double low = 0.0;
    for (std::size_t i = 0; i < signal.size(); ++i) {
        low += 0.01 * (static_cast<double>(random()) / 1073741824.0 - 1.0 - low);
        signal[i] = 8.0 * low / (1.0 + static_cast<double>(i % 8000) / 500.0);
    }
    return signal;
}

std::uint64_t hashOf(const Signals& signals)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const Signal& signal : signals) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(signal.data());
        for (std::size_t i = 0; i < signal.size() * sizeof(double); ++i) {
            hash = (hash ^ bytes[i]) * 0x100000001B3;
        }
    }
    return hash;
}

// By program; without oversampling, and with the factor of four.
constexpr std::uint64_t kRecorded[][2] = {
    {0x4db5dba8203a9909, 0x62ec29da177d2e83}, {0x457b22304c39162a, 0x3dae7ed5ceca384},
    {0xb526ebaa943c2d98, 0x9b9379ad347af649}, {0x5836fb8f1551d174, 0x26c7108701bc6f2a},
    {0xf32d92d6a7d57879, 0xc9f454cb4c0925e8}, {0x6fbe25ba7df947ef, 0xffbd1231912a6f43},
    {0xd2a4eef4e072a909, 0x9e86ac48027d1dd0}, {0xd5b152339db6d16b, 0x404712953122cb2f},
    {0x9217e3a5980d005, 0xcba2b18e771538df},  {0x7dab32c92c6b1ba8, 0x5611a15319ace561},
    {0x2fbb34134b444118, 0x3574ed4a07100423}, {0xbd0c8db5547016b7, 0x3eb5ba111b666402},
    {0x9e69f0836b7644f3, 0x3c66cf38dc002171},
};

TEST_F(EffectBits, OfEveryFactoryProgram)
{
    const Signals input{beatingNoise(1), beatingNoise(2)};
    for (std::size_t program = 0; program < 13; ++program) {
        for (int i = 0; i < 2; ++i) {
            CNoiseSource::restartSeeds();
            TestHost host;
            bringUp(host);
            requireOk(host.activateProgram(static_cast<std::int32_t>(program)));
            CAudioParamContext context;
            paramOf(host, "oversampling").setValue(0, 0, 0, i == 0 ? 1 : 3, context);
            const std::uint64_t hash = hashOf(host.run<double>(input, {512}));
            const bool isRecorded = program < std::size(kRecorded) && kRecorded[program][i] == hash;
            EXPECT_TRUE(isRecorded) << "program " << program << ", column " << i << ": 0x" << std::hex
                                    << hash;
        }
    }
}

} // namespace
} // namespace qel::test
