// ReduceBits to one bit: an 8-bit plane to a packed bit plane, most significant bit first, by a
// plain threshold (kind 0) or by Stucki error diffusion in fixed point (kind 3).
#include "dither/reduce_bits.h"
#include "frame/checks.h"
#include "frame/entry.h"

namespace kro::dither {
namespace {

// Writes one row's bits, bit(x) for x in 0..width-1, starting o bits below the top of dst[0].
//
// The two ends are deliberately unlike. A first byte entered at an offset keeps its top o bits
// and has everything below replaced, so bits after a run that ends inside that byte are cleared.
// A last byte that the run does not fill keeps its bits below the run.
template <class BitFn>
void PlaceBits(uint8_t* dst, int o, int width, BitFn bit) {
  int x = 0;
  if (o != 0) {
    const int head = 8 - o < width ? 8 - o : width;
    unsigned bits = 0;
    for (int j = 0; j < head; ++j) bits |= static_cast<unsigned>(bit(x++)) << (7 - o - j);
    *dst = static_cast<uint8_t>((*dst & (0xFF00u >> o)) | bits);
    ++dst;
  }
  for (; x + 8 <= width; x += 8) {
    unsigned bits = 0;
    for (int j = 0; j < 8; ++j) bits |= static_cast<unsigned>(bit(x + j)) << (7 - j);
    *dst++ = static_cast<uint8_t>(bits);
  }
  if (x < width) {
    const int r = 8 - (width - x);  // bit positions left below the run
    unsigned bits = 0;
    for (int j = 0; x < width; ++j) bits |= static_cast<unsigned>(bit(x++)) << (7 - j);
    *dst = static_cast<uint8_t>((*dst & ((1u << r) - 1u)) | bits);
  }
}

// Stucki in fixed point: errors in eighths of a grey step, gathered with the Stucki weights,
// scaled by 23 / 1024, a gain a little below 1/42 that damps every error slightly. A white
// output removes 2047 (255.875 in eighths).
int StuckiBit(const int32_t* p2, const int32_t* p1, int32_t* c, int x, int sample, int threshold) {
  const int32_t a = 2 * (p2[x - 1] + p2[x + 1] + p1[x - 2] + p1[x + 2]) +
                    4 * (p2[x] + p1[x - 1] + p1[x + 1] + c[x - 2]) + 8 * (p1[x] + c[x - 1]) +
                    (p2[x - 2] + p2[x + 2]);
  const int32_t v = (sample << 13) + 23 * a;
  int32_t e = v >> 10;
  const int one = v > (threshold << 13) ? 1 : 0;
  if (one) e -= 2047;
  c[x] = e;
  return one;
}

}  // namespace
}  // namespace kro::dither

namespace kro::wrap {

kroStatus kroiReduceBits_8u1u_C1R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                  int dstBitOffset, KroSize roi, int /*ignoredA*/, int /*ignoredB*/,
                                  int ditherKind, Kro8u threshold, Kro8u* buffer) {
  KRO_CHECK(CheckNull(src, dst));
  if (roi.width < 1 || roi.height < 1 || dstBitOffset < 0) return kroStatusBadSize;
  if (ditherKind != 0 && ditherKind != 3) return kroStatusBadDitherType;
  if (ditherKind == 3 && buffer == nullptr) return kroStatusNullPointer;
  // Only the low three bits of the offset count; the pointer itself is never moved by it.
  const int o = dstBitOffset & 7;
  const int w = roi.width;
  const std::ptrdiff_t ss = srcStep, ds = dstStep;
  if (ditherKind == 0) {
    for (int y = 0; y < roi.height; ++y) {
      const uint8_t* s = src + y * ss;
      dither::PlaceBits(dst + y * ds, o, w, [&](int x) { return threshold < s[x] ? 1 : 0; });
    }
    return kroStatusOk;
  }
  // Three rows of w + 4 integers with two pads each side, cleared once, rotated as a ring.
  auto* e = reinterpret_cast<int32_t*>(dither::AlignWork(buffer));
  std::memset(e, 0, (static_cast<std::size_t>(w) + 4) * 3 * sizeof(int32_t));
  int32_t* p2 = e + 2;
  int32_t* p1 = e + w + 6;
  int32_t* c = e + 2 * w + 10;
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* s = src + y * ss;
    dither::PlaceBits(dst + y * ds, o, w,
                      [&](int x) { return dither::StuckiBit(p2, p1, c, x, s[x], threshold); });
    int32_t* t = p2;
    p2 = p1;
    p1 = c;
    c = t;
  }
  return kroStatusOk;
}

}  // namespace kro::wrap
