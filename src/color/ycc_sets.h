// The three YCbCr coefficient sets of the library, as 16.16 fixed-point integers.
//
// Ycc601:     studio range (Y 16..235, chroma 16..240), BT.601 weights.
// Ycc709Csc:  studio range, BT.709 weights.
// Ycc709Hdtv: BT.709 weights without the luma offset.
//
// Forward rows are R, G, B weights of one output; each integer is round(weight * 65536) of the
// three-decimal matrix (0.257 * 65536 = 16842.8 -> 16843, ...). The inverse has two 16.16 forms
// for Ycc601, A and B, that differ in the last units: which one a kernel uses is part of its
// result. Vector kernels use the same matrices at other scales; those constants stand beside
// the kernels that use them.
#pragma once

#include <cstdint>

namespace kro {

struct YccForward {
  int32_t y[3], cb[3], cr[3];  // weights of R, G, B
  int32_t yOffset;             // 16 or 0, added to luma; chroma is offset by 128
};

// Inverse weights on y = Y - yOffset, cb = Cb - 128, cr = Cr - 128.
struct YccInverse {
  int32_t yWeight;           // on y, for all three outputs
  int32_t rCr;               // R = yWeight y + rCr cr
  int32_t gCb, gCr;          // G = yWeight y + gCb cb + gCr cr (both negative)
  int32_t bCb;               // B = yWeight y + bCb cb
  int32_t yOffset;           // 16, or 0 when Y is taken as it stands
};

// 0.257 0.504 0.098 / -0.148 -0.291 0.439 / 0.439 -0.368 -0.071
inline constexpr YccForward kYcc601Forward = {
    {16843, 33030, 6423}, {-9699, -19071, 28770}, {28770, -24117, -4653}, 16};
// 1.164 y + 1.596 cr; 1.164 y - 0.392 cb - 0.813 cr; 1.164 y + 2.017 cb
inline constexpr YccInverse kYcc601InverseA = {76284, 104595, -25690, -53281, 132186, 16};
inline constexpr YccInverse kYcc601InverseB = {76282, 104593, -25689, -53279, 132184, 16};

// 0.183 0.614 0.062 / -0.101 -0.338 0.439 / 0.439 -0.399 -0.040
inline constexpr YccForward kYcc709CscForward = {
    {11993, 40239, 4063}, {-6619, -22151, 28770}, {28770, -26149, -2621}, 16};
// 1.164 y + 1.793 cr; 1.164 y - 0.213 cb - 0.534 cr; 1.164 y + 2.115 cb
inline constexpr YccInverse kYcc709CscInverse = {76284, 117506, -13959, -34996, 138609, 16};

// 0.213 0.715 0.072 / -0.117 -0.394 0.511 / 0.511 -0.464 -0.047
inline constexpr YccForward kYcc709HdtvForward = {
    {13959, 46858, 4719}, {-7668, -25821, 33489}, {33489, -30409, -3080}, 0};
// y + 1.540 cr; y - 0.183 cb - 0.459 cr; y + 1.816 cb (unit luma weight: 65536)
inline constexpr YccInverse kYcc709HdtvInverse = {65536, 100925, -11993, -30081, 119013, 0};

}  // namespace kro
