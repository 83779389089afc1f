// Vector arithmetic: each output sample from the samples at the same place in the inputs.
//
// The output may be any of the input signals; spans that overlap in part are defined for `copy` only.
#include "KernelFamilies.h"
#include "WideLanes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

namespace qel {

namespace {

// From here on a block move beats the loop.
constexpr std::size_t kBlockMoveAbove = 400;

template <auto kOperation, std::size_t... kInputs>
void mapLanes(const CKernelCall& call)
{
    const auto loop = [n = std::size_t{call.count}](double* out, const auto*... in) {
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = kOperation(in[i]...);
        }
    };
    loop(call.samples(0), static_cast<const double*>(call.samples(kInputs))...);
}

// out[i] = operation(x[i]...), the x being the operands listed. Operand 0 among them means in place.
template <auto kOperation, std::size_t... kInputs>
void map(const CKernelCall& call)
{
    runWidest<&mapLanes<kOperation, kInputs...>, const CKernelCall&>(call);
}

template <auto kOperation, std::size_t... kInputs>
void mapLanesWithScalar(const CKernelCall& call)
{
    const auto loop = [n = std::size_t{call.count}, c = call.scalar](double* out, const auto*... in) {
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = kOperation(c, in[i]...);
        }
    };
    loop(call.samples(0), static_cast<const double*>(call.samples(kInputs))...);
}

// The same with the call's scalar as the operation's first argument.
template <auto kOperation, std::size_t... kInputs>
void mapWithScalar(const CKernelCall& call)
{
    runWidest<&mapLanesWithScalar<kOperation, kInputs...>, const CKernelCall&>(call);
}

constexpr auto kAdd2 = [](double b, double d) { return b + d; };
constexpr auto kAdd3 = [](double b, double d, double e) { return b + d + e; };
constexpr auto kAdd4 = [](double b, double d, double e, double f) { return b + d + e + f; };
constexpr auto kSub = [](double b, double d) { return b - d; };
constexpr auto kMul = [](double b, double d) { return b * d; };
constexpr auto kMulAdd = [](double a, double b, double d) { return a + b * d; };
constexpr auto kAbs = [](double b) { return std::fabs(b); };
constexpr auto kSqrt = [](double b) { return std::sqrt(b); };
constexpr auto kMixBy = [](double b, double d, double e) { return d + (b - d) * e; };

constexpr auto kAddC = [](double c, double b) { return b + c; };
constexpr auto kMulC = [](double c, double b) { return b * c; };
constexpr auto kMix = [](double c, double b, double d) { return d + (b - d) * c; };
constexpr auto kAdd2Mul = [](double c, double b, double d) { return (b + d) * c; };
constexpr auto kAdd3Mul = [](double c, double b, double d, double e) { return (b + d + e) * c; };

// The first argument wins a tie, which tells +0 from -0.
template <class Better>
struct Best
{
    constexpr double operator()(double first) const { return first; }
    constexpr double operator()(double first, double second, auto... rest) const
    {
        return (*this)(Better{}(second, first) ? second : first, rest...);
    }
};
constexpr Best<std::greater<>> kMax;
constexpr Best<std::less<>> kMin;

// Overlapping spans are copied sample by sample, front to back.
void copy(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in = call.samples(1);
    const std::size_t n = call.count;
    const bool isApart = std::less_equal<>{}(out + n, in) || std::less_equal<>{}(in + n, out);
    if (n > kBlockMoveAbove && isApart) {
        std::memcpy(out, in, n * sizeof(double));
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = in[i];
    }
}

void addcid(const CKernelCall& call)
{
    if (call.count == 0) {
        return;
    }
    double* out = call.samples(0);
    const double value = *call.samples(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] += value;
    }
}

void mix2(const CKernelCall& call)
{
    if (call.count == 0) {
        return;
    }
    double* out = call.samples(0);
    const double* b = call.samples(1);
    const double* d = call.samples(2);
    const double weightB = call.samples(3)[0];
    const double weightD = call.samples(3)[1];
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = b[i] * weightB + d[i] * weightD;
    }
}

void fill0(const CKernelCall& call)
{
    std::memset(call.samples(0), 0, call.count * sizeof(double));
}

void fillc(const CKernelCall& call)
{
    std::fill_n(call.samples(0), call.count, call.scalar);
}

void filld(const CKernelCall& call)
{
    if (call.count > 0) {
        std::fill_n(call.samples(0), call.count, double{*call.samples(1)});
    }
}

constexpr CKernelDef kTable[] = {
    {"copy", copy, 2, 1},
    {"addc", mapWithScalar<kAddC, 1>, 2, 1},
    {"addcid", addcid, 2, 1},
    {"add2", map<kAdd2, 1, 2>, 3, 1},
    {"add2i", map<kAdd2, 0, 1>, 2, 1},
    {"add3", map<kAdd3, 1, 2, 3>, 4, 1},
    {"add4", map<kAdd4, 1, 2, 3, 4>, 5, 1},
    {"sub2", map<kSub, 1, 2>, 3, 1},
    {"max2", map<kMax, 1, 2>, 3, 1},
    {"max2i", map<kMax, 0, 1>, 2, 1},
    {"max3", map<kMax, 1, 2, 3>, 4, 1},
    {"max4", map<kMax, 1, 2, 3, 4>, 5, 1},
    {"min2", map<kMin, 1, 2>, 3, 1},
    {"min3", map<kMin, 1, 2, 3>, 4, 1},
    {"min4", map<kMin, 1, 2, 3, 4>, 5, 1},
    {"mix", mapWithScalar<kMix, 1, 2>, 3, 1},
    {"mix2", mix2, 4, 1},
    {"mixb", map<kMixBy, 1, 2, 3>, 4, 1},
    {"add2mul", mapWithScalar<kAdd2Mul, 1, 2>, 3, 1},
    {"add3mul", mapWithScalar<kAdd3Mul, 1, 2, 3>, 4, 1},
    {"mulc", mapWithScalar<kMulC, 1>, 2, 1},
    {"mulci", mapWithScalar<kMulC, 0>, 1, 1},
    {"mul2", map<kMul, 1, 2>, 3, 1},
    {"mul2i", map<kMul, 0, 1>, 2, 1},
    {"mul2addi", map<kMulAdd, 0, 1, 2>, 3, 1},
    {"abs", map<kAbs, 1>, 2, 1},
    {"sqrt", map<kSqrt, 1>, 2, 1},
    {"fill0", fill0, 1, 1},
    {"fillc", fillc, 1, 1},
    {"filld", filld, 2, 1},
};

} // namespace

std::span<const CKernelDef> vectorKernels()
{
    return kTable;
}

} // namespace qel
