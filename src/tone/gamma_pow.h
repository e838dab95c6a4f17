// The power routine of the 32f gamma forms: x^y over a row of floats for the two exponents of
// the transfer curve, computed in double precision and rounded once to single.
//
// For a normal float x = 2^k * m (m in [1, 2)):
//   x^y = 2^(k y) * c^y * (1 + r)^y,   r = m * (1/c) - 1 (exact),
// c the centre of m's 1/256-wide segment. 2^(k y) and c^y come from the curve's tables (one
// correct rounding each), (1 + r)^y from its binomial series to r^3 (|r| <= 2^-9, truncation
// below 2^-40 relative); the double result is within 2^-39 of x^y before its one rounding to
// single. Zero, negative, subnormal, infinite and NaN inputs take the C runtime's pow (+0 gives
// +0 directly: both exponents are positive).
//
// PowRow rounds that approximation (almost always the correctly rounded float; where x^y lies
// within 2^-39 of a midpoint between two floats it can be one unit off).
// PowRowAsRuntime gives, for every input, exactly (float)pow((double)x, (double)y) with the C
// runtime's pow, for exponents in (0, 1] (the forward curve): where the approximation's bound
// does not decide the rounding (about one input in 4000) it asks the runtime itself.
//
// The SSE2 body and the scalar twin run the same double operations in the same order, so both
// builds give the same bytes.
#pragma once

namespace kro::gamma {

struct PowCurve {
  double segment[256][2];  // {1/c rounded to 29 bits, c^y} for m in [1 + i/256, 1 + (i+1)/256)
  double scale[512];       // by the top 9 bits of x: 2^(k y) for normal positive x, else 0
  double series[3];        // y, y(y-1)/2, y(y-1)(y-2)/6
  float exponent;          // y
};

// y = 0.45f (bits 0x3EE66666) and y = 2.2222223f (bits 0x400E38E4); src/tables/gamma_pow_tables.cc.
extern const PowCurve kGammaPowFwd;
extern const PowCurve kGammaPowInv;

// dst[i] = src[i]^y for count elements; src and dst may be the same array.
void PowRow(const float* src, const PowCurve& curve, float* dst, int count);
void PowRowAsRuntime(const float* src, const PowCurve& curve, float* dst, int count);

// The scalar twins (the portable build's path, and the tests' oracle for the vector body).
float PowScalar(float x, const PowCurve& curve);
float PowScalarAsRuntime(float x, const PowCurve& curve);

}  // namespace kro::gamma
