// 4:2:0 to RGB and BGR: the per-pixel formulas of the ten arithmetic sets.
//
// Every pixel of a 2x2 block takes its own Y and the block's one Cb, Cr pair; chroma is
// repeated, never interpolated. Each export computes one set. Several sets have a vector form
// in 16-bit lanes and a scalar form in 32 bits that can differ by one in the last bit, and the
// column where one hands over to the other is part of the result:
//
//   set  exports                                   vector form          scalar form, columns
//   V    YCbCr P3C3R (RGB, BGR)                    601 at 2^12, rounded 601 form A, W & ~7 on
//   Q    YCrCb P3C4R                               601 at 2^13, rounded 601 form A, W & ~7 on
//   C    YCbCr 709CSC P3C3R                        709 studio at 2^13   709 studio,  W & ~7 on
//   D    YCbCr 709HDTV P3C4R                       709 at 2^4, no offset 709,        W & ~7 on
//   A    YUV P3AC4R                                YUV at 2^4           YUV rounded, W & ~3 on
//   P1   YCbCr P2C3R/P2C4R, YCbCr BGR P3C4R        offsets folded in    none
//   P2   YCrCb P2C3R/P2C4R                         P1 one unit apart    none
//   H1   YUV BGR P3C3R                             YUV at 2^1           none
//   H2   YUV RGB P3C3R, P3C3                       H1 one unit apart    none
//   T    YUV P3R, P3                               (the 32-bit form)    YUV truncated (all)
//
// The functions below compute the 16-bit lane forms one lane at a time (the portable build's
// path and the reference of the SSSE3 bodies) and the 32-bit forms as written. All take
// (Y, Cb, Cr) (for YUV: Y, U, V) and return R, G, B.
#pragma once

#include <cstdint>

#include "color/matrix_rows.h"
#include "color/rgb_ycbcr.h"
#include "color/rgb_yuv.h"
#include "color/ycc_sets.h"
#include "frame/lanes.h"

namespace kro::yuv420 {

using color::PixelFn;
using color::Px;
using lane::Add;
using lane::AddS;
using lane::HiS;
using lane::PackU8;
using lane::Sra;
using lane::Sub;
using lane::SubS;

inline int16_t I16(int x) { return static_cast<int16_t>(static_cast<uint16_t>(x)); }

// ---- Sets V, Q and C: the full-resolution block forms ------------------------------------
//
// V is I-A of the full-resolution family (Ycc601 at 2^12: hiS(4769, (Y - 16) << 7), +4, >> 3),
// Q is I-B (Ycc601 at 2^13, +8, >> 4) and C is I-D (Ycc709Csc at 2^13). Their sums stay far
// inside 16 bits (|Ys| < 4500, |chroma term| < 4300), so the order of the saturating and
// wrapping adds in which the two families write them cannot change a bit.
inline Px BlockV(int y, int cb, int cr) { return ycbcr::InverseA(y, cb, cr); }
inline Px BlockQ(int y, int cb, int cr) { return ycbcr::InverseB(y, cb, cr); }
inline Px BlockC(int y, int cb, int cr) { return ycbcr::Inverse709(y, cb, cr); }

// ---- Set D: Ycc709Hdtv at 2^4 ---------------------------------------------------------------
// Luma enters unscaled (Y << 4, no offset); chroma products at 2^-16 of (C - 128) << 7.
// 12616 = 1.540 * 2^13, 1499 = 0.183 * 2^13, 3760 = 0.459 * 2^13, 14877 = 1.816 * 2^13.
inline Px BlockD(int y, int cb, int cr) {
  const int16_t yy = I16(y << 4), u = I16((cb - 128) * 128), v = I16((cr - 128) * 128);
  return {PackU8(Sra(AddS(Add(yy, HiS(v, 12616)), 8), 4)),
          PackU8(Sra(AddS(Sub(Sub(yy, HiS(u, 1499)), HiS(v, 3760)), 8), 4)),
          PackU8(Sra(AddS(Add(yy, HiS(u, 14877)), 8), 4))};
}

// ---- Set A: YUV at 2^4 -------------------------------------------------------------------
// 9338 = 1.140 * 2^13, 3227 = 0.394 * 2^13, 4759 = 0.581 * 2^13, 16646 = 2.032 * 2^13.
// G subtracts the saturated sum of its two products.
inline Px BlockA(int y, int u, int v) {
  const int16_t yy = I16(y << 4), uu = I16((u - 128) * 128), vv = I16((v - 128) * 128);
  return {PackU8(Sra(AddS(Add(yy, HiS(vv, 9338)), 8), 4)),
          PackU8(Sra(AddS(Sub(yy, AddS(HiS(uu, 3227), HiS(vv, 4759))), 8), 4)),
          PackU8(Sra(AddS(Add(yy, HiS(uu, 16646)), 8), 4))};
}

// ---- Sets P1 and P2: offsets folded into one constant per output ---------------------------
// Y, Cb and Cr enter as they are (x 128); the products of the luma offset 16, of the chroma
// offset 128 and the rounding term 4 are one subtracted constant per output:
//   oR = 6537 * 128 * 128 / 65536 (1634) + 4769 * 16 * 128 / 65536 (149) - 4 = 1779, and so on.
// The YCrCb two-plane forms use a set whose weights and constants are one unit apart from the
// YCbCr set's; the difference is kept.
struct FoldedSet {
  int16_t kY, kB, kR, kU, kV;  // luma; Cb to B; Cr to R; Cb and Cr to G
  int16_t oB, oR, oG;          // folded offsets and rounding
};
inline constexpr FoldedSet kFoldedP1 = {4769, 8263, 6537, 1605, 3330, 2211, 1779, 1089};
inline constexpr FoldedSet kFoldedP2 = {4768, 8262, 6537, 1606, 3330, 2210, 1779, 1084};

template <const FoldedSet& k>
inline Px Folded(int y, int cb, int cr) {
  const int16_t yy = HiS(I16(y << 7), k.kY);
  const int16_t r = Sub(HiS(I16(cr << 7), k.kR), k.oR);
  const int16_t b = Sub(HiS(I16(cb << 7), k.kB), k.oB);
  const int16_t g = Sub(AddS(HiS(I16(cb << 7), k.kU), HiS(I16(cr << 7), k.kV)), k.oG);
  return {PackU8(Sra(AddS(yy, r), 3)), PackU8(Sra(SubS(yy, g), 3)), PackU8(Sra(AddS(yy, b), 3))};
}
inline Px BlockP1(int y, int cb, int cr) { return Folded<kFoldedP1>(y, cb, cr); }
inline Px BlockP2(int y, int cb, int cr) { return Folded<kFoldedP2>(y, cb, cr); }

// ---- Sets H1 and H2: YUV at 2^1, no rounding ------------------------------------------------
// Y << 1 against the high products of (C << 4) - 2048 = (C - 128) * 16. The BGR export's set is
// one unit above the RGB exports' in every weight; both are kept.
template <int kB, int kU, int kW, int kV>
inline Px Half(int y, int u, int v) {
  const int16_t y2 = I16(y << 1), a = I16((u << 4) - 2048), b = I16((v << 4) - 2048);
  return {PackU8(Sra(AddS(y2, HiS(b, kV)), 1)),
          PackU8(Sra(Add(Add(y2, HiS(a, kU)), HiS(b, kW)), 1)),
          PackU8(Sra(AddS(y2, HiS(a, kB)), 1))};
}
inline Px BlockH1(int y, int u, int v) { return Half<16646, -3228, -4760, 9339>(y, u, v); }
inline Px BlockH2(int y, int u, int v) { return Half<16645, -3227, -4759, 9338>(y, u, v); }

// ---- 32-bit forms ---------------------------------------------------------------------------
// (w (Y - offset) + weights * chroma + round) >> 16, clamped to 0..255, on the 16.16 sets.
inline Px ScalarV(int y, int cb, int cr) {  // also the scalar form of set Q
  return ycbcr::InverseTail<kYcc601InverseA, 32768>(y, cb, cr);
}
inline Px ScalarC(int y, int cb, int cr) {
  return ycbcr::InverseTail<kYcc709CscInverse, 32768>(y, cb, cr);
}
inline Px ScalarD(int y, int cb, int cr) {
  return ycbcr::InverseTail<kYcc709HdtvInverse, 32768>(y, cb, cr);
}
// YUV: Y << 16 + 74711 v; - 25821 u - 38076 v; + 133169 u. Set A rounds, set T truncates.
inline Px ScalarA(int y, int u, int v) { return yuv::InverseTail3(y, u, v); }
inline Px ScalarT(int y, int u, int v) {
  return yuv::InverseTail<0, 0, 74711, 25821, 38076, 133169>(y, u, v);
}

}  // namespace kro::yuv420
