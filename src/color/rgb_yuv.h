// RGB <-> YUV at full resolution (U and V offset by 128): the per-pixel formulas and the row
// kernel they run in.
//
// Every export has its own integer arithmetic: the pixels inside a row's vector blocks take a
// block formula in 16-bit lanes (high-half multiplies, saturating adds, no rounding bias in most
// of them), the remaining pixels a tail formula in 32-bit arithmetic with its own rounding
// constants. The same colour can therefore convert to values one apart at two positions of a
// row. That is the required behaviour, so both formulas are kept exactly, and the block size of
// each export decides which pixels take which.
#pragma once

#include <cstdint>

#include "color/matrix_rows.h"
#include "frame/lanes.h"

namespace kro::yuv {

using color::Px;
using color::PixelFn;
using color::Samples;
using color::ConvertRowScalar;

using lane::AddS;
using lane::AddU;
using lane::HiS;
using lane::HiU;
using lane::SubS;

inline uint8_t Sat8L(int16_t x) { return lane::PackU8(x); }

// ---- RGB to YUV ----------------------------------------------------------------------------

// Block formula of the C3 and P3 forward kernels. Each product is cut to its high half before
// the sums and there is no rounding bias, so white gives Y = 254, U = V = 127.
inline Px ForwardBlockA(int r, int g, int b) {
  const uint16_t r8 = static_cast<uint16_t>(r << 8), g8 = static_cast<uint16_t>(g << 8),
                 b8 = static_cast<uint16_t>(b << 8);
  const uint16_t y = static_cast<uint16_t>(
      AddU(AddU(HiU(19595, r8), HiU(38469, g8)), HiU(7471, b8)) >> 8);
  const int16_t r7 = static_cast<int16_t>(r << 7), g7 = static_cast<int16_t>(g << 7),
                b7 = static_cast<int16_t>(b << 7);
  const int16_t u = AddS(AddS(HiS(-4816, r7), HiS(-9469, g7)), HiS(14286, b7));
  const int16_t v = AddS(AddS(HiS(20152, r7), HiS(-16875, g7)), HiS(-3276, b7));
  return {static_cast<uint8_t>(y), Sat8L(AddS(lane::Sra(u, 6), 128)),
          Sat8L(AddS(lane::Sra(v, 6), 128))};
}

// Block formula of the AC4 to four-plane kernel: luma at twice the scale (products added in the
// order R, B, G, plus 1), chroma from the differences to it.
inline Px ForwardBlockB(int r, int g, int b) {
  const int16_t y2 = AddS(AddS(AddS(HiS(9798, static_cast<int16_t>(r * 4)),
                                    HiS(3736, static_cast<int16_t>(b * 4))),
                               HiS(19235, static_cast<int16_t>(g * 4))),
                          1);
  const int16_t u = AddS(HiS(16121, lane::Sub(static_cast<int16_t>(2 * b), y2)), 128);
  const int16_t v = AddS(HiS(28737, lane::Sub(static_cast<int16_t>(2 * r), y2)), 128);
  return {Sat8L(lane::Sra(y2, 1)), Sat8L(u), Sat8L(v)};
}

// Tail formulas in 32-bit arithmetic. The green weight is 38470 here, one above the block's, so
// the weights sum to 65536. T1 truncates Y and uses 32767 in the chroma; T2 rounds Y and uses
// 32768. U is not clamped (it stays in 16..239 for 8-bit input).
template <int kRound, bool kRoundLuma>
inline Px ForwardTail(int r, int g, int b) {
  const int32_t s = 19595 * r + 38470 * g + 7471 * b;
  const int32_t y = kRoundLuma ? (s + 32768) >> 16 : s >> 16;
  const int32_t u = ((((b << 16) - s + kRound) >> 16) * 32244 >> 16) + 128;
  const int32_t v = ((((r << 16) - s + kRound) >> 16) * 57475 >> 16) + 128;
  return {Low8(y), Low8(u), Sat8(v)};
}
inline Px ForwardTail1(int r, int g, int b) { return ForwardTail<32767, false>(r, g, b); }
inline Px ForwardTail2(int r, int g, int b) { return ForwardTail<32768, true>(r, g, b); }

// Tail of the planar forward kernel: the block's weights (38469, so white gives 254) in 32 bits.
inline Px ForwardTail3(int r, int g, int b) {
  return {Low8((19595 * r + 38469 * g + 7471 * b) >> 16),
          Low8(((-4816 * r - 9469 * g + 14286 * b) >> 15) + 128),
          Sat8(((20152 * r - 16875 * g - 3276 * b) >> 15) + 128)};
}

// ---- YUV to RGB ----------------------------------------------------------------------------

// Block formulas: chroma scaled up by 8, 16 or 128 before a high-half multiply. Only the C4
// kernel's blocks (C) carry a rounding term.
inline Px InverseBlockA(int y, int u, int v) {
  const int16_t u8x = static_cast<int16_t>((u - 128) * 8), v8x = static_cast<int16_t>((v - 128) * 8);
  const int16_t yy = static_cast<int16_t>(y);
  return {Sat8L(AddS(yy, HiS(v8x, 9339))),
          Sat8L(AddS(AddS(yy, HiS(u8x, -3228)), HiS(v8x, -4760))),
          Sat8L(AddS(yy, HiS(u8x, 16646)))};
}
inline Px InverseBlockB(int y, int u, int v) {
  const int16_t u16x = static_cast<int16_t>((u - 128) * 16),
                v16x = static_cast<int16_t>((v - 128) * 16);
  const int16_t y2x = static_cast<int16_t>(y * 2);
  return {Sat8L(lane::Sra(AddS(y2x, HiS(v16x, 9338)), 1)),
          Sat8L(lane::Sra(AddS(AddS(y2x, HiS(u16x, -3227)), HiS(v16x, -4759)), 1)),
          Sat8L(lane::Sra(AddS(y2x, HiS(u16x, 16645)), 1))};
}
inline Px InverseBlockC(int y, int u, int v) {
  const int16_t u128x = static_cast<int16_t>((u - 128) * 128),
                v128x = static_cast<int16_t>((v - 128) * 128);
  const int16_t y8x = static_cast<int16_t>(y * 8);
  return {Sat8L(lane::Sra(AddS(AddS(y8x, HiS(v128x, 4669)), 4), 3)),
          Sat8L(lane::Sra(AddS(SubS(SubS(y8x, HiS(v128x, 2380)), HiS(u128x, 1614)), 4), 3)),
          Sat8L(lane::Sra(AddS(AddS(y8x, HiS(u128x, 8323)), 4), 3))};
}

// Tails in 32 bits. T1 rounds R and B but not G (kept), T2 rounds none with weights one lower,
// T3 rounds all three.
template <int kRoundRB, int kRoundG, int kVR, int kUG, int kVG, int kUB>
inline Px InverseTail(int y, int u, int v) {
  const int32_t yy = y << 16, uu = u - 128, vv = v - 128;
  return {Sat8((yy + kVR * vv + kRoundRB) >> 16), Sat8((yy - kUG * uu - kVG * vv + kRoundG) >> 16),
          Sat8((yy + kUB * uu + kRoundRB) >> 16)};
}
inline Px InverseTail1(int y, int u, int v) {
  return InverseTail<32768, 0, 74711, 25821, 38076, 133169>(y, u, v);
}
inline Px InverseTail2(int y, int u, int v) {
  return InverseTail<0, 0, 74710, 25820, 38075, 133168>(y, u, v);
}
inline Px InverseTail3(int y, int u, int v) {
  return InverseTail<32768, 32768, 74711, 25821, 38076, 133169>(y, u, v);
}

}  // namespace kro::yuv
