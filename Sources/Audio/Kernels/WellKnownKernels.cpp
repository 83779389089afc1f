// The kernels that modules reach without a look-up.
#include "WellKnownKernels.h"

#include "CKernelContext.h"
#include "KernelFamilies.h"

namespace qel {

namespace {

struct FamilyRow
{
    const char* init;
    const char* update;
    const char* run;
    const char* gainRun;
    std::int32_t stateBytes;
};

// One row for each EFilterFamily.
constexpr FamilyRow kFamilyRows[] = {
    {"fltbiqi", "fltbiqu", "fltbiqcommon", "fltbiqcommong", 48},
    {"fltbiqi", "fltbiqu", "fltbiqlp", "fltbiqlpg", 48},
    {"fltbiqi", "fltbiqu", "fltbiqhp", "fltbiqhpg", 48},
    {"fltbiqi", "fltbiqu", "fltbiqbp", "fltbiqbpg", 48},
    {"fltbiqi", "fltbiqu", "fltbiqnotch", "fltbiqnotchg", 48},
    {"fltlphp1i", "fltlphp1u", "fltlp1a", "fltlp1ag", 40},
    {"fltlphp1i", "fltlphp1u", "fltlp1b", "fltlp1bg", 40},
    {"fltlphp1i", "fltlphp1u", "fltlp1c", "fltlp1cg", 40},
    {"fltlphp1i", "fltlphp1u", "fltlp1d", "fltlp1dg", 40},
    {"fltlphp1i", "fltlphp1u", "flthp1a", "flthp1ag", 40},
    {"fltlphp1i", "fltlphp1u", "flthp1b", "flthp1bg", 40},
    {"fltlphp1i", "fltlphp1u", "flthp1c", "flthp1cg", 40},
    {"fltlphp1i", "fltlphp1u", "flthp1d", "flthp1dg", 40},
    {"flthbf2i", "flthbf2u", "flthbf2", "flthbf2g", 160},
    {"flthbf4i", "flthbf4u", "flthbf4", "flthbf4g", 240},
    {"flthbf6i", "flthbf6u", "flthbf6", "flthbf6g", 320},
    {"flthbf8i", "flthbf8u", "flthbf8", "flthbf8g", 400},
    {"flthbf10i", "flthbf10u", "flthbf10", "flthbf10g", 480},
    {"flthbf12i", "flthbf12u", "flthbf12", "flthbf12g", 560},
    {"flthbf14i", "flthbf14u", "flthbf14", "flthbf14g", 640},
    {"flthbf16i", "flthbf16u", "flthbf16", "flthbf16g", 720},
    {"", "", "", "", 0},
    {"fltheqi", "flthequ", "fltheq", "fltheq", 160},
    {"fltapf1_6i", "fltapf1_6u", "fltapf1_6", "fltapf1_6g", 144},
};
static_assert(std::size(kFamilyRows) == kFilterFamilies);
static_assert(sizeof(CWellKnownKernels) == 152 * sizeof(std::int32_t));

} // namespace

CWellKnownKernels registerWellKnownKernels(CKernelContext& context)
{
    CWellKnownKernels known;
    std::size_t index = 0;
    for (const auto table : {vectorKernels(), crossfadeKernels()}) {
        for (const CKernelDef& kernel : table) {
            known.general.at(index++) = context.addKernel(kernel);
        }
    }
    for (const auto table :
         {sharedFadeKernels(), biquadKernels(), firstOrderKernels(), halfBandKernels(), allPassKernels(),
          equalizerKernels(), spectralKernels(), resamplingKernels(), noiseKernels()}) {
        context.addKernels(table);
    }
    for (std::size_t i = 0; i < kFilterFamilies; ++i) {
        const FamilyRow& row = kFamilyRows[i];
        known.filters[i] = {context.findShortName(row.init), context.findShortName(row.update),
                            context.findShortName(row.run), context.findShortName(row.gainRun),
                            row.stateBytes};
    }
    return known;
}

} // namespace qel
