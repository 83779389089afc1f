// Elementary functions of a double whose results are the same bits on every platform.
#pragma once

namespace qel::math {

// The C libraries of Linux and Windows differ in the last bit of these functions; a signal path or a table
// that uses them would not sound bit-identical on both. Everything here is built from + - * / sqrt and bit
// operations in a fixed order, which IEEE 754 defines to the last bit, so the result depends on the argument
// alone. Use these instead of <cmath> wherever the value can reach a sample, a coefficient or a stored file.
//
// Domain: every double; NaN, infinities, signed zeros, subnormals, overflow and underflow give what IEEE 754
// recommends. errno is never set; the floating-point flags are not specified.
// Accuracy, as the largest error measured against 64-bit significands over millions of arguments (0.5 is
// perfect rounding), subnormal results included: exp, exp2, sin, cos, tan, cosh, asinh, pow 0.51 ulp; log,
// log2, log10 0.52; sinh 0.53; atan, tanh 0.54.
//
// Requires round to nearest. Where a host has subnormals flushed (FTZ, DAZ), subnormal arguments count as 0
// and subnormal results become 0; all other results keep their bits.
//
// Threads: pure functions over constant tables; callable from any thread, the audio thread included.
double exp(double x);
double exp2(double x);  // exact for integers
double log(double x);   // natural; -infinity at 0, NaN below
double log2(double x);  // exact for powers of 2
double log10(double x); // exact for powers of 10
double pow(double x, double y);

// Radians. Accurate for every finite argument, however large.
double sin(double x);
double cos(double x);
double tan(double x);
double atan(double x);

double sinh(double x);
double cosh(double x);
double tanh(double x);
double asinh(double x);

} // namespace qel::math
