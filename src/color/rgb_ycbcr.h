// RGB <-> YCbCr (studio range) at full resolution: the per-pixel forms.
//
// Each export computes one of these forms, and as in the YUV family the vector blocks of a row
// and its scalar tail may differ in the last bit: F-A / F-B against F-T forward, I-A .. I-D
// against I-T0 .. I-T2 inverse. The block forms are the coefficient sets of ycc_sets.h at other
// scales, written as the 16-bit lane arithmetic they run in; the tails use the 16.16 sets.
#pragma once

#include <cstdint>

#include "color/matrix_rows.h"
#include "color/ycc_sets.h"
#include "frame/lanes.h"

namespace kro::ycbcr {

using color::Px;
using lane::AddS;
using lane::AddU;
using lane::HiS;
using lane::HiU;
using lane::MulRound;
using lane::Sra;
using lane::SubS;

inline uint8_t Clamp(int16_t x) { return lane::PackU8(x); }
inline int16_t I16(int x) { return static_cast<int16_t>(x); }
inline int16_t Wrap(int x) { return static_cast<int16_t>(static_cast<uint16_t>(x)); }

// ---- Forward --------------------------------------------------------------------------------

// F-A: unsigned high products for luma, signed for chroma, each with its rounding term.
inline Px ForwardA(int r, int g, int b) {
  const uint16_t y = AddU(static_cast<uint16_t>(
                              AddU(AddU(AddU(HiU(16843, static_cast<uint16_t>(r << 8)),
                                             HiU(33030, static_cast<uint16_t>(g << 8))),
                                        HiU(6423, static_cast<uint16_t>(b << 8))),
                                   128) >>
                              8),
                          16);
  const int16_t r7 = I16(r << 7), g7 = I16(g << 7), b7 = I16(b << 7);
  const int16_t cb = AddS(AddS(AddS(HiS(-9699, r7), HiS(-19071, g7)), HiS(28770, b7)), 64);
  const int16_t cr = AddS(AddS(AddS(HiS(28770, r7), HiS(-24117, g7)), HiS(-4653, b7)), 64);
  return {Clamp(I16(y)), Clamp(AddS(Sra(cb, 7), 128)), Clamp(AddS(Sra(cr, 7), 128))};
}

// F-B: rounded products at scale 2^14, plain 16-bit sums, and a bias of offset * 64 + 2 (a
// rounding term of 2, not 32; kept as it is).
inline Px ForwardB(int r, int g, int b) {
  const int16_t r7 = I16(r << 7), g7 = I16(g << 7), b7 = I16(b << 7);
  const int16_t y = Wrap(MulRound(4211, r7) + MulRound(8258, g7) + MulRound(1606, b7) + 1026);
  const int16_t cb = Wrap(MulRound(7193, b7) - MulRound(4768, g7) - MulRound(2425, r7) + 8194);
  const int16_t cr = Wrap(MulRound(7193, r7) - MulRound(6029, g7) - MulRound(1163, b7) + 8194);
  return {Clamp(Sra(y, 6)), Clamp(Sra(cb, 6)), Clamp(Sra(cr, 6))};
}

// F-T: the 16.16 set with the offsets and a half folded into one constant.
inline Px ForwardTail(int r, int g, int b) {
  const YccForward& f = kYcc601Forward;
  return {Low8((f.y[0] * r + f.y[1] * g + f.y[2] * b + 0x108000) >> 16),
          Low8((f.cb[0] * r + f.cb[1] * g + f.cb[2] * b + 0x808000) >> 16),
          Low8((f.cr[0] * r + f.cr[1] * g + f.cr[2] * b + 0x808000) >> 16)};
}

// ---- Inverse --------------------------------------------------------------------------------

struct Scaled {
  int16_t y7, cb7, cr7;  // (Y - 16), (Cb - 128), (Cr - 128), each times 128
};
inline Scaled Scale(int y, int cb, int cr) {
  return {I16((y - 16) * 128), I16((cb - 128) * 128), I16((cr - 128) * 128)};
}

// I-A: scale 2^12, rounded.
inline Px InverseA(int y, int cb, int cr) {
  const Scaled s = Scale(y, cb, cr);
  const int16_t ys = HiS(4769, s.y7);
  return {Clamp(Sra(AddS(AddS(ys, HiS(6537, s.cr7)), 4), 3)),
          Clamp(Sra(AddS(SubS(ys, AddS(HiS(1605, s.cb7), HiS(3330, s.cr7))), 4), 3)),
          Clamp(Sra(AddS(AddS(ys, HiS(8263, s.cb7)), 4), 3))};
}

// I-B: scale 2^13, rounded; G and B sum with plain adds before the saturating rounding term.
inline Px InverseB(int y, int cb, int cr) {
  const Scaled s = Scale(y, cb, cr);
  const int16_t ys = HiS(9535, s.y7);
  return {Clamp(Sra(AddS(AddS(ys, HiS(13074, s.cr7)), 8), 4)),
          Clamp(Sra(AddS(Wrap(ys - HiS(6660, s.cr7) - HiS(3211, s.cb7)), 8), 4)),
          Clamp(Sra(AddS(Wrap(ys + HiS(16523, s.cb7)), 8), 4))};
}

// I-C: scale 2^13 without a rounding term, 9536 and 3203 where I-B has 9535 and 3211 (white
// stops at 254).
inline Px InverseC(int y, int cb, int cr) {
  const Scaled s = Scale(y, cb, cr);
  const int16_t ys = HiS(9536, s.y7);
  return {Clamp(Sra(AddS(HiS(13074, s.cr7), ys), 4)),
          Clamp(Sra(AddS(HiS(-3203, s.cb7), AddS(ys, HiS(-6660, s.cr7))), 4)),
          Clamp(Sra(AddS(HiS(16523, s.cb7), ys), 4))};
}

// I-D: the 709 studio set at scale 2^13, rounded. Returned as R, G, B.
inline Px Inverse709(int y, int cb, int cr) {
  const Scaled s = Scale(y, cb, cr);
  const int16_t ys = HiS(9535, s.y7);
  return {Clamp(Sra(AddS(AddS(ys, HiS(14688, s.cr7)), 8), 4)),
          Clamp(Sra(AddS(AddS(AddS(ys, HiS(-4375, s.cr7)), HiS(-1745, s.cb7)), 8), 4)),
          Clamp(Sra(AddS(AddS(ys, HiS(17326, s.cb7)), 8), 4))};
}

// Tails on the 16.16 forms of the 601 set: T0 form A unrounded, T1 form A rounded, T2 form B
// rounded.
template <const YccInverse& kSet, int kRound>
inline Px InverseTail(int y, int cb, int cr) {
  const int32_t yy = kSet.yWeight * (y - kSet.yOffset), u = cb - 128, v = cr - 128;
  return {Sat8((yy + kSet.rCr * v + kRound) >> 16),
          Sat8((yy + kSet.gCb * u + kSet.gCr * v + kRound) >> 16),
          Sat8((yy + kSet.bCb * u + kRound) >> 16)};
}
inline Px InverseT0(int y, int cb, int cr) { return InverseTail<kYcc601InverseA, 0>(y, cb, cr); }
inline Px InverseT1(int y, int cb, int cr) {
  return InverseTail<kYcc601InverseA, 32768>(y, cb, cr);
}
inline Px InverseT2(int y, int cb, int cr) {
  return InverseTail<kYcc601InverseB, 32768>(y, cb, cr);
}

}  // namespace kro::ycbcr
