// Discrete Fourier transform of real signals.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qel {

// In-place transforms of `length` reals, a power of two from 2 up (any other length leaves the data alone).
//
// Spectrum: data[0] is the value at 0 Hz, data[1] the value at half the rate, both real; then data[2k] and
// data[2k + 1] are the real and imaginary part of bin k, with X[k] = sum x[n] e^(-2 pi i k n / length). The
// inverse is scaled, so inverse after forward gives the signal.
//
// The caller keeps two tables for each length: `work` of realFftWorkSize(length) integers and `roots` of
// realFftRootsSize(length) doubles. work[0] is the length that they were filled for; a call with another
// length fills them (and so a new table begins with work[0] = 0).
//
// Even and odd samples form one complex signal of half the length (Cooley, Lewis, Welch, "The Fast Fourier
// Transform Algorithm: Programming Considerations in the Calculation of Sine, Cosine and Laplace Transforms",
// 1970), which goes through the radix-2 transform of Cooley and Tukey (1965).
void realFftForward(double* data, std::size_t length, std::int32_t* work, double* roots);
void realFftInverse(double* data, std::size_t length, std::int32_t* work, double* roots);

constexpr std::size_t realFftWorkSize(std::size_t length)
{
    return 1 + length / 2;
}
constexpr std::size_t realFftRootsSize(std::size_t length)
{
    return length;
}

} // namespace qel
