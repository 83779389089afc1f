// Every kernel's output on seeded noise, down to the last bit, whole and in pieces. A value that changes here
// changes what users' projects sound like; it also has to be the same at every optimisation and on both
// systems.
#include "../TestRate.h"
#include "CFilterSection.h"
#include "CrunchKernels.h"
#include "KernelFamilies.h"
#include "KernelRig.h"
#include "MeterKernels.h"
#include "PShiftKernels.h"
#include "SatDRFKernels.h"
#include "TransKernels.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <functional>
#include <map>

namespace qel {
namespace {

using test::KernelRig;
using test::Signal;

constexpr std::size_t kCount = 2000;
std::uint64_t hashOf(const Signal& signal)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto* bytes = reinterpret_cast<const unsigned char*>(signal.data());
    for (std::size_t i = 0; i < signal.size() * sizeof(double); ++i) {
        hash = (hash ^ bytes[i]) * 0x100000001B3;
    }
    return hash;
}

const std::map<std::string, std::uint64_t>& recordedBits();

// What runs one kernel over the samples from `at` on.
using RunPart = std::function<void(std::size_t at, std::size_t count)>;

class KernelBits : public ::testing::Test
{
protected:
    KernelBits()
    {
        for (const auto table : {satDRFKernels(), crunchRlsKernels(), crunchAtkKernels(), transKernels(),
                                 pshiftKernels(), meterKernels()}) {
            rig_.context().addKernels(table);
        }
    }
    void TearDown() override
    {
        for (const auto& [name, hash] : hashes_) {
            const auto recorded = recordedBits().find(name);
            EXPECT_TRUE(recorded != recordedBits().end() && recorded->second == hash)
                << "{\"" << name << "\", 0x" << std::hex << hash << "},";
        }
    }
    // Runs whole and, from a state as it was at first, in pieces, and notes the bits of `out`.
    void check(const std::string& name, CBufferRef out, std::size_t length,
               const std::function<void()>& begin, const RunPart& run)
    {
        begin();
        run(0, kCount);
        const Signal whole = rig_.read(out, length);
        begin();
        std::size_t at = 0;
        for (const std::size_t piece : test::randomSplit(kCount, 7)) {
            run(at, piece);
            at += piece;
        }
        EXPECT_TRUE(test::isSameBits(rig_.read(out, length), whole)) << name << " depends on the cut";
        hashes_[name] = hashOf(whole);
    }
    static CBufferRef from(CBufferRef ref, std::size_t at) { return ref.advancedBy(static_cast<int>(at)); }

    KernelRig rig_;
    std::map<std::string, std::uint64_t> hashes_;
    CBufferRef in_[4] = {rig_.buffer(test::noiseSignal(kCount, 1)), rig_.buffer(test::noiseSignal(kCount, 2)),
                         rig_.buffer(test::noiseSignal(kCount, 3)),
                         rig_.buffer(test::noiseSignal(kCount, 4))};
    CBufferRef out_ = rig_.context().allocateSamples(2 * kCount);
};

TEST_F(KernelBits, OfVectors)
{
    for (const CKernelDef& kernel : vectorKernels()) {
        const std::string name = kernel.name;
        // One value or a pair stands for a signal here, at the same place in each piece.
        const int single = name == "addcid" || name == "filld" ? 1 : name == "mix2" ? 3 : -1;
        const int id = rig_.context().findShortName(name);
        check(
            name, out_, kCount,
            [&] {
                rig_.run("copy", kCount, 0.0, {out_, in_[0]});
            },
            [&](std::size_t at, std::size_t count) {
                CBufferRef operands[5] = {from(out_, at)};
                for (int i = 1; i < kernel.operandCount; ++i) {
                    operands[i] = from(in_[i - 1], i == single ? 0 : at);
                }
                rig_.context().submit(
                    id, static_cast<std::uint32_t>(count), 0.3,
                    std::span(operands).first(static_cast<std::size_t>(kernel.operandCount)));
            });
    }
}

TEST_F(KernelBits, OfFilters)
{
    Signal coefficients = test::noiseSignal(CFilterSection::kMaxCoefficients, 5);
    for (double& value : coefficients) {
        value = 0.25 + 0.15 * value; // stable for every family
    }
    const CBufferRef block = rig_.buffer(coefficients);
    const CKernelRegistry& registry = rig_.context().registry();
    for (std::size_t family = 0; family < kFilterFamilies; ++family) {
        const CFilterKernels& kernels = rig_.context().filterKernels(static_cast<EFilterFamily>(family));
        if (kernels.stateBytes == 0) {
            continue; // the free one
        }
        const CBufferRef state = rig_.bytes(static_cast<std::size_t>(kernels.stateBytes));
        for (const int id : {kernels.run, kernels.gainRun}) {
            ASSERT_GE(id, 0) << family;
            check(
                std::string(registry.entry(id)->name).substr(CKernelContext::kNamePrefix.size()), out_,
                kCount,
                [&] {
                    rig_.context().submit(kernels.init, 0, 0.0, {state, block});
                },
                [&](std::size_t at, std::size_t count) {
                    rig_.context().submit(id, static_cast<std::uint32_t>(count), 0.7,
                                          {from(out_, at), state, from(in_[0], at)});
                });
        }
        // A first-order chain forgets; all others go on where they were, with the same coefficients.
        const auto name = std::string(registry.entry(kernels.update)->name);
        const CBufferRef next = rig_.bytes(static_cast<std::size_t>(kernels.stateBytes));
        const bool forgets = name.ends_with("fltlphp1u");
        rig_.context().submit(kernels.init, 0, 0.0, {state, block});
        rig_.context().submit(kernels.run, 100, 0.0, {out_, state, in_[0]});
        rig_.context().submit(kernels.update, 0, 0.0, {next, forgets ? block : state, block});
        rig_.context().submit(kernels.run, 100, 0.0, {out_, next, in_[1]});
        const Signal updated = rig_.read(out_, 100);
        if (forgets) {
            rig_.context().submit(kernels.init, 0, 0.0, {state, block});
        }
        rig_.context().submit(kernels.run, 100, 0.0, {out_, state, in_[1]});
        EXPECT_TRUE(test::isSameBits(rig_.read(out_, 100), updated)) << name;
    }
}

TEST_F(KernelBits, OfModules)
{
    const auto state = [&](auto record) {
        const CBufferRef ref = rig_.bytes(sizeof record);
        std::memcpy(rig_.context().address(ref), &record, sizeof record);
        return ref;
    };
    Signal level = test::noiseSignal(kCount, 6);
    for (std::size_t i = 0; i < kCount; ++i) {
        level[i] = std::fabs(level[i]) * (i % 700 < 200 ? 1.0 : 0.05);
    }
    const CBufferRef levels = rig_.buffer(level);
    // Kernels of one state; what their clear kernel leaves is what they began with.
    const auto checkState = [&](const std::string& name, const std::string& family, const auto& record,
                                CBufferRef input) {
        const CBufferRef ref = state(record);
        const RunPart run = [&](std::size_t at, std::size_t count) {
            rig_.run(name, count, 0.0, {from(out_, at), ref, from(input, at)});
        };
        const std::string label = name + std::to_string(hashes_.size());
        check(
            label, out_, kCount,
            [&] {
                std::memcpy(rig_.context().address(ref), &record, sizeof record);
                rig_.run(family + "i", 0, test::kRateHz, {ref});
            },
            run);
        rig_.run(family + "c", 0, 0.0, {ref});
        run(0, kCount);
        EXPECT_EQ(hashOf(rig_.read(out_, kCount)), hashes_[label]) << name << " remembers behind its clear";
    };
    for (const auto mode : {SatDRFState::EMode::kPrecise, SatDRFState::EMode::kPumping}) {
        SatDRFState saturator{};
        saturator.parameters = {mode, 4.0, 100.0};
        checkState("satdrf", "satdrf", saturator, in_[0]);
    }
    for (const bool isInverse : {false, true}) {
        CrunchRlsState release{};
        release.releaseSec = 0.05;
        release.drive = 8.0;
        release.isInverse = isInverse;
        checkState("crunchrls", "crunchrls", release, levels);
        for (const auto type : {CrunchAtkState::EType::kFixed, CrunchAtkState::EType::kVariable,
                                CrunchAtkState::EType::kEven}) {
            CrunchAtkState attack{};
            attack.attackSec = 0.01;
            attack.type = type;
            attack.isShaped = attack.isInverse = isInverse;
            checkState("crunchatk", "crunchatk", attack, levels);
        }
    }
    for (const char* curve : {"transvh", "transh", "transm", "transl", "transvl"}) {
        TransState detector{};
        detector.sense = 0.4;
        detector.scale = 2.0;
        detector.timeSec = 0.01;
        detector.decaySec = 0.03;
        checkState(curve, "trans", detector, levels);
        const CBufferRef ref = state(detector);
        check(
            "transdecay", out_, kCount,
            [&] {
                rig_.run("copy", kCount, 0.0, {out_, levels});
                rig_.run("transi", 0, test::kRateHz, {ref});
            },
            [&](std::size_t at, std::size_t count) {
                rig_.run("transdecay", count, 0.0, {from(out_, at), ref});
            });
    }
    PShiftState shifter{};
    shifter.grain = 441;
    const CBufferRef ring = rig_.context().allocateSamples(PShiftState::ringSamples(shifter.grain));
    const CBufferRef shifterRef = state(shifter);
    check(
        "pshift", out_, kCount,
        [&] {
            rig_.run("pshifti", 0, 0.0, {shifterRef, ring});
        },
        [&](std::size_t at, std::size_t count) {
            rig_.run("pshift", count, 0.0, {from(out_, at), shifterRef, ring, from(in_[0], at)});
        });
    for (const char* meter : {"meter", "meterc", "meterd"}) {
        CMeterState record;
        record.historyLength = 5;
        record.frameLength = 130;
        record.rmsCutoffHz = record.biasCutoffHz = 100.0;
        record.releaseSec = 0.05;
        const CBufferRef ref = state(record);
        const CBufferRef history = rig_.context().allocateSamples(5);
        const std::string name = meter;
        check(
            name, out_, 3,
            [&] {
                std::memcpy(rig_.context().address(ref), &record, sizeof record);
                rig_.run("meteri", 0, test::kRateHz, {ref, history});
            },
            [&](std::size_t at, std::size_t count) {
                if (name == "meterd") {
                    rig_.run(name, count, 0.0, {ref, history, from(in_[0], at), from(levels, at)});
                } else {
                    rig_.run(name, count, 0.0, {ref, history, from(levels, at)});
                }
                rig_.run("metersub" + name.substr(5), 0, 2.0, {out_, ref});
            });
    }
}

TEST_F(KernelBits, OfTheRest)
{
    const CBufferRef small = rig_.bytes(64);
    check(
        "xfade", out_, kCount, [&] { rig_.run("xfadei", kCount, 0.0, {small}); },
        [&](std::size_t at, std::size_t count) {
            rig_.run("xfade", count, 0.0, {from(out_, at), small, from(in_[0], at), from(in_[1], at)});
        });
    EXPECT_EQ(rig_.read(out_, 1), rig_.read(in_[1], 1)) << "a fade begins on its last operand";
    for (const bool adds : {false, true}) {
        check(
            adds ? "denorm" : "denormn", out_, kCount,
            [&] { std::memset(rig_.context().address(small), 5, 4); },
            [&](std::size_t at, std::size_t count) {
                adds ? rig_.run("denorm", count, 0.0, {from(out_, at), small, from(in_[0], at)})
                     : rig_.run("denormn", count, 0.0, {from(out_, at), small});
            });
    }
    check(
        "interp2", out_, 2 * kCount, [] {},
        [&](std::size_t at, std::size_t count) {
            rig_.run("interp2", count, 0.0, {from(out_, 2 * at), from(in_[0], at)});
        });
    for (const char* name : {"decim2", "decim2s"}) {
        rig_.run(name, kCount / 2, 0.0, {out_, in_[0]});
        EXPECT_EQ(rig_.read(from(out_, 3), 1), rig_.read(from(in_[0], name[6] ? 7 : 6), 1)) << name;
    }
    const CBufferRef side = rig_.context().allocateSamples(kCount);
    for (const char* name : {"msenc", "msdec"}) {
        check(
            name, out_, kCount, [] {},
            [&](std::size_t at, std::size_t count) {
                rig_.run(name, count, 0.0,
                         {from(out_, at), from(side, at), from(in_[0], at), from(in_[1], at)});
            });
    }
}

const std::map<std::string, std::uint64_t>& recordedBits()
{
    static const std::map<std::string, std::uint64_t> kBits = {
        {"abs", 0xe4efcbffa85d6e66},           {"add2", 0xd843262962b4dcc0},
        {"add2i", 0x562827bec9687806},         {"add2mul", 0x74c848a8e41bd73c},
        {"add3", 0xd1a39065caadfcd7},          {"add3mul", 0xfd3c19d4912e17cb},
        {"add4", 0xb394f13230a06734},          {"addc", 0xc10744f008346fa5},
        {"addcid", 0xf4342c34dd0fce1f},        {"copy", 0xd6b5209563e91a66},
        {"crunchatk3", 0xb5c831d25e666357},    {"crunchatk4", 0xf7a89cd0875f0159},
        {"crunchatk5", 0x9f673664406fbe32},    {"crunchatk7", 0x7a3ad97f7224de01},
        {"crunchatk8", 0xdafac779e60d57fa},    {"crunchatk9", 0x5e49679b9339d754},
        {"crunchrls2", 0x8ce9ad9676516995},    {"crunchrls6", 0x579eba2dd3c75d47},
        {"denorm", 0x6fcc435d2162ed21},        {"denormn", 0x927fd73da7a29ec5},
        {"fill0", 0x2c36c2471ceec525},         {"fillc", 0x4004fb7368e10025},
        {"filld", 0xb99a1c69e82c74e5},         {"fltapf1_6", 0xf3ed48ea9d602953},
        {"fltapf1_6g", 0xc32d68d75707728f},    {"fltbiqbp", 0x5b9722c087460547},
        {"fltbiqbpg", 0xadb786d588bace85},     {"fltbiqcommon", 0xdb962d89708b3792},
        {"fltbiqcommong", 0x4d362fe96d4e3bf9}, {"fltbiqhp", 0xa4c94b101de9b89a},
        {"fltbiqhpg", 0xc53e26dc02e8cea3},     {"fltbiqlp", 0x3b31117a812a097f},
        {"fltbiqlpg", 0x3d84d4d5061a1ce9},     {"fltbiqnotch", 0x1259609e1aa72261},
        {"fltbiqnotchg", 0x215bbf100e7f9cfa},  {"flthbf10", 0xc910165cc9390f77},
        {"flthbf10g", 0xcfda9ea332b47e8d},     {"flthbf12", 0x4e30cc527a2f90f1},
        {"flthbf12g", 0xc9f37c9cd8cf4560},     {"flthbf14", 0x5a2176a5d2296203},
        {"flthbf14g", 0x6b9a734f7f60d7dd},     {"flthbf16", 0x4d8c718652004277},
        {"flthbf16g", 0x681da8f886f2ace},      {"flthbf2", 0x6b8f8c7840cd1b3f},
        {"flthbf2g", 0xfa43a09362074192},      {"flthbf4", 0x4958d285317562ba},
        {"flthbf4g", 0xf3ce957c98998cd7},      {"flthbf6", 0x64a4f3c7d7b3c760},
        {"flthbf6g", 0x607a9efb0f0d4079},      {"flthbf8", 0x42630d585a59ef2a},
        {"flthbf8g", 0x2287a74f89230e09},      {"fltheq", 0xa6025b3f7f61f124},
        {"flthp1a", 0x7eb955d229f85414},       {"flthp1ag", 0xe114777cabdc8893},
        {"flthp1b", 0x10d2d14f222bcad0},       {"flthp1bg", 0x6f34a7aef1797e1c},
        {"flthp1c", 0x389f81accbb15f27},       {"flthp1cg", 0x78608b82ee26cdce},
        {"flthp1d", 0x24e68a19cc121879},       {"flthp1dg", 0x94b8d490d39ede77},
        {"fltlp1a", 0x49ab2b7b48e58213},       {"fltlp1ag", 0xfe4d7ff78825063f},
        {"fltlp1b", 0x29a16c391b989e1},        {"fltlp1bg", 0x1aa2b3150eb5398f},
        {"fltlp1c", 0x7ff26ed1181f0683},       {"fltlp1cg", 0xd08195fc3e17e91},
        {"fltlp1d", 0x7ecdb44d45d6873a},       {"fltlp1dg", 0xf545d36b78f226cb},
        {"interp2", 0x1d08748ab4f5a686},       {"max2", 0xf1af7d715d785ea0},
        {"max2i", 0xd6b5209563e91a66},         {"max3", 0x7d4d07a5fccb361e},
        {"max4", 0x91a6d3907110e2f9},          {"meter", 0x4070490c7bf4f322},
        {"meterc", 0x303366bed40b0f82},        {"meterd", 0xe30bc77e2c8cac14},
        {"min2", 0xbb4c493e4079c07c},          {"min3", 0x26550b1b13ff576c},
        {"min4", 0x530d168d9ffc8657},          {"mix", 0xa1389b713d6a74e2},
        {"mix2", 0x81be95752310fe1d},          {"mixb", 0x9dc85782a7b6d0a2},
        {"msdec", 0xd843262962b4dcc0},         {"msenc", 0xfd7afdb61c9cf252},
        {"mul2", 0x6ecf7b201eb1fa48},          {"mul2addi", 0x101ef4db7959c2fa},
        {"mul2i", 0xc84504ff5db2304e},         {"mulc", 0xec35fecd2020e98a},
        {"mulci", 0xec35fecd2020e98a},         {"pshift", 0xaf6efa60e52e26df},
        {"satdrf0", 0xc76e7f6e066ae79},        {"satdrf1", 0xafe3da406b144160},
        {"sqrt", 0xd05ddc817eb562e1},          {"sub2", 0xc610fe0223ddb01e},
        {"transdecay", 0x5b1174fd0f6cb0ac},    {"transh12", 0x267799490719c6a2},
        {"transl14", 0x2423334eb9394eef},      {"transm13", 0xb3fa49eac3b6581b},
        {"transvh10", 0xf9dc9f51b99d46d2},     {"transvl15", 0x499bc62f1ad2295f},
        {"xfade", 0x8680f0f8deec9b8},
    };
    return kBits;
}

} // namespace
} // namespace qel
