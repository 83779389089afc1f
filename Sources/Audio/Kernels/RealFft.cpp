// Discrete Fourier transform of real signals.
#include "RealFft.h"

#include "KernelMath.h"

#include <bit>
#include <utility>

namespace qel {

namespace {

struct Complex
{
    double re;
    double im;

    friend Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
    friend Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
    friend Complex operator*(Complex a, Complex b)
    {
        return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    }
};

Complex conjugate(Complex a)
{
    return {a.re, -a.im};
}

Complex load(const double* data, std::size_t bin)
{
    return {data[2 * bin], data[2 * bin + 1]};
}

void store(double* data, std::size_t bin, Complex value)
{
    data[2 * bin] = value.re;
    data[2 * bin + 1] = value.im;
}

// work[1 + i] is i with its bits reversed; root k is e^(-2 pi i k / length).
void fillTables(std::size_t length, std::int32_t* work, double* roots)
{
    const std::size_t half = length / 2;
    work[0] = static_cast<std::int32_t>(length);
    work[1] = 0;
    for (std::size_t i = 1; i < half; ++i) {
        work[1 + i] =
            static_cast<std::int32_t>(static_cast<std::size_t>(work[1 + i / 2]) / 2 + (i % 2) * (half / 2));
    }
    for (std::size_t k = 0; k < half; ++k) {
        const double angle = 2 * kernelmath::kPi * static_cast<double>(k) / static_cast<double>(length);
        store(roots, k, {kernelmath::cos(angle), -kernelmath::sin(angle)});
    }
}

// Complex transform of length / 2 values, without a scale.
template <bool kIsInverse>
void transformComplex(double* data, std::size_t length, const std::int32_t* work, const double* roots)
{
    const std::size_t total = length / 2;
    for (std::size_t i = 0; i < total; ++i) {
        const std::size_t other = static_cast<std::size_t>(work[1 + i]);
        if (i < other) {
            const Complex held = load(data, i);
            store(data, i, load(data, other));
            store(data, other, held);
        }
    }
    for (std::size_t half = 1; half < total; half *= 2) {
        const std::size_t rootStep = total / half;
        for (std::size_t begin = 0; begin < total; begin += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const Complex root = load(roots, k * rootStep);
                const Complex upper = load(data, begin + k);
                const Complex lower = load(data, begin + k + half) * (kIsInverse ? conjugate(root) : root);
                store(data, begin + k, upper + lower);
                store(data, begin + k + half, upper - lower);
            }
        }
    }
}

bool prepare(std::size_t length, std::int32_t* work, double* roots)
{
    if (length < 2 || !std::has_single_bit(length)) {
        return false;
    }
    if (work[0] != static_cast<std::int32_t>(length)) {
        fillTables(length, work, roots);
    }
    return true;
}

} // namespace

void realFftForward(double* data, std::size_t length, std::int32_t* work, double* roots)
{
    if (!prepare(length, work, roots)) {
        return;
    }
    transformComplex<false>(data, length, work, roots);
    const std::size_t half = length / 2;
    const Complex first = load(data, 0);
    store(data, 0, {first.re + first.im, first.re - first.im});
    // The spectra of the even and of the odd samples are the two symmetric parts of the complex spectrum.
    for (std::size_t k = 1; k <= half / 2; ++k) {
        const Complex z = load(data, k);
        const Complex mirrored = conjugate(load(data, half - k));
        const Complex even = Complex{0.5, 0} * (z + mirrored);
        const Complex odd = Complex{0, -0.5} * (z - mirrored);
        const Complex turned = load(roots, k) * odd;
        store(data, k, even + turned);
        store(data, half - k, conjugate(even - turned));
    }
}

void realFftInverse(double* data, std::size_t length, std::int32_t* work, double* roots)
{
    if (!prepare(length, work, roots)) {
        return;
    }
    const std::size_t half = length / 2;
    const Complex ends = load(data, 0);
    store(data, 0, {0.5 * (ends.re + ends.im), 0.5 * (ends.re - ends.im)});
    for (std::size_t k = 1; k <= half / 2; ++k) {
        const Complex x = load(data, k);
        const Complex mirrored = conjugate(load(data, half - k));
        const Complex even = Complex{0.5, 0} * (x + mirrored);
        const Complex odd = conjugate(load(roots, k)) * (Complex{0.5, 0} * (x - mirrored));
        const Complex turned = Complex{0, 1} * odd;
        store(data, k, even + turned);
        store(data, half - k, conjugate(even - turned));
    }
    transformComplex<true>(data, length, work, roots);
    const double scale = 1.0 / static_cast<double>(half);
    for (std::size_t i = 0; i < length; ++i) {
        data[i] *= scale;
    }
}

} // namespace qel
