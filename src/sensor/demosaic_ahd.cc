// Adaptive homogeneity-directed demosaicing of a Bayer plane, 8u and 16u.
//
// Every pixel is interpolated twice: once with green taken along the row (the horizontal
// result), once along the column (the vertical result); red and blue of each result follow
// from its own green by colour differences. Both results go to a luma-chroma space (BT.601
// studio weights without offsets); each pixel counts, per result, how many of its four
// neighbours lie within the thresholds eY (luma) and eC (squared chroma distance), and its vote
// is the horizontal count minus the vertical one. The nine votes of the 3 x 3 window decide:
// negative takes the vertical result, positive the horizontal one, zero repeats the last
// decision of the row's run (a run starts on the horizontal side). All arithmetic is signed
// 32-bit; in the 16-bit form a squared chroma distance of a large step wraps and is compared
// as the signed value it wraps to.
//
// Reads outside the image are mirrored about its first and last row and column (the mirror
// keeps each position's colour; it is applied again while a position is still outside, which
// only a 5-pixel-wide image needs). The region is cut into an interior strip, which starts on
// a red site with even width and height and reads the image directly, and up to four border
// strips read through the mirror. The tie memory restarts at the first column of each strip
// in every row, so the partition is part of the result.
//
// Scratch is the caller's: 30 rows tmpStep bytes apart, used as rings (green of each result,
// five rows each; red and blue of each result and the votes, four rows each). A strip of w
// computed columns uses w + 6 entries per row, entry c standing for column xs - 3 + c; entries
// are samples (votes are signed bytes). Border strips go one row a turn and keep the raw
// samples of a colour's rows in its ring rows; the interior goes two rows a turn, which needs
// the whole colour ring for finished rows, and reads the raw samples from the image instead.
//
// 8-bit data runs vector bodies (eight or sixteen columns a turn) for every step, 16-bit data
// for green and the votes; each gives the values of the scalar steps, which finish each row and are
// the portable build's path. The order of work has no effect on the result other than through the
// tie memory's start.
//
// Small regions: the strip table can give a strip that starts above or left of the region, or
// reaches past it. Such a strip keeps its first column (where its tie memory starts) but only
// the pixels inside the region are computed to the end and written: nothing outside the
// region is ever written. Every strip then computes at most max(width, 6) columns, so tmpStep
// of (max(region width, 6) + 6) samples is enough.
#include "sensor/demosaic_ahd.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "frame/checks.h"
#include "frame/entry.h"
#include "frame/simd.h"

namespace kro::ahd {

// Grid codes 0..3 name the colours at (0,0), (1,0) / (0,1), (1,1): B G / G R, R G / G B,
// G B / R G, G R / B G; these are the position codes 2, 0, 1, 3.
int PositionCode(int grid, int x, int y) {
  static constexpr int kCodeAtOrigin[4] = {2, 0, 1, 3};
  int p = kCodeAtOrigin[grid & 3];
  if (x & 1) p ^= 3;
  if (y & 1) p ^= 1;
  return p;
}

Plan PlanStrips(KroRect rect, KroSize size, int grid) {
  Plan plan{};
  const int wd = size.width, ht = size.height;
  // A negative origin moves to the edge; its width is not shortened.
  const int x1 = std::max(rect.x, 0), y1 = std::max(rect.y, 0);
  const int w1 = std::min(rect.width, wd - x1), h1 = std::min(rect.height, ht - y1);
  plan.x1 = x1, plan.y1 = y1, plan.w1 = w1, plan.h1 = h1;
  plan.empty = w1 < 1 || h1 < 1;
  if (plan.empty) return plan;
  int x0 = std::max(x1, 5), y0 = std::max(y1, 5);
  int wI = std::min(wd - 5, x1 + w1) - x0;
  int hI = std::min(ht - 5, y1 + h1) - y0;
  int p = PositionCode(grid, x0, y0);
  if (p == 2 || p == 3) {  // blue or green-in-red-row: one column on, to a red or green-blue site
    ++x0, --wI;
    p = (p & 3) ^ 3;
  }
  wI &= ~1;  // no clamp at zero: a negative width stays negative (-5 becomes -6)
  if (p != 0) ++y0, --hI;
  hI &= ~1;
  plan.strips[0] = {x0, y0, wI, hI};
  plan.strips[1] = {x1, y1, w1, y0 - y1};
  plan.strips[2] = {x1, y0 + hI, w1, y1 + h1 - (y0 + hI)};
  plan.strips[3] = {x1, y0, x0 - x1, hI};
  plan.strips[4] = {x0 + wI, y0, x1 + w1 - (x0 + wI), hI};
  return plan;
}

namespace {

// A position reflected into 0..n-1 (n >= 5). Reflection keeps the parity, so the colour.
inline int Fold(int v, int n) {
  const int last = n - 1;
  while (v < 0 || v > last) v = v < 0 ? -v : 2 * last - v;
  return v;
}

// Scratch entries are samples at any byte address.
template <class T>
inline int Get(const uint8_t* row, int c) {
  T v;
  std::memcpy(&v, row + static_cast<std::ptrdiff_t>(c) * sizeof(T), sizeof(T));
  return v;
}
template <class T>
inline void Put(uint8_t* row, int c, int v) {
  const T t = static_cast<T>(v);
  std::memcpy(row + static_cast<std::ptrdiff_t>(c) * sizeof(T), &t, sizeof(T));
}

// Green at a red or blue site from its two neighbours a, b and the samples a2, b2 two away on
// the same line: average plus a quarter of the second difference, kept between a and b.
inline int Green(int a, int b, int a2, int b2, int c) {
  const int g = ((a + b) >> 1) + ((2 * c - a2 - b2) >> 2);
  const int lo = std::min(a, b), hi = std::max(a, b);
  return g < lo ? lo : (g > hi ? hi : g);
}

struct Ycc {
  int y, cb, cr;
};
inline Ycc ToYcc(int r, int g, int b) {
  return {(66 * r + 129 * g + 25 * b + 128) >> 8, (-38 * r - 74 * g + 112 * b + 128) >> 8,
          (112 * r - 94 * g - 18 * b + 128) >> 8};
}
inline int DiffY(const Ycc& a, const Ycc& b) { return std::abs(a.y - b.y); }
// Squared chroma distance in 32 bits; a large 16-bit step wraps, and the wrapped value is
// compared as signed.
inline int32_t DiffC(const Ycc& a, const Ycc& b) {
  const uint32_t dcb = static_cast<uint32_t>(a.cb - b.cb), dcr = static_cast<uint32_t>(a.cr - b.cr);
  return static_cast<int32_t>(dcb * dcb + dcr * dcr);
}

// The ring rows of the scratch.
enum : int {
  kGreen = 0,    // rows 2i: green of the vertical result, 2i + 1: horizontal (ring of 5)
  kColour = 10,  // rows 10 + 5j: red V, red H, blue V, blue H, votes (ring of 4)
};

#if KRO_SIMD
// Vector forms of the row steps for 8-bit samples, eight columns a turn in 16-bit lanes. Every
// intermediate fits its lane exactly (sums of two products stay within +-28560, luma sums within
// 56228 unsigned, squared chroma distances below 58000 unsigned), so these give the same values
// as the scalar steps.
namespace vec {

inline __m128i Load8(const uint8_t* p) {
  return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                           _mm_setzero_si128());
}
inline void Store8(uint8_t* p, __m128i v) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
}
inline __m128i Blend(__m128i mask, __m128i a, __m128i b) {  // a where mask, else b
  return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
// Lanes 0, 2, 4, 6 (first column's parity) or lanes 1, 3, 5, 7.
inline __m128i ParityMask(bool evenLanes) {
  return evenLanes ? _mm_set_epi16(0, -1, 0, -1, 0, -1, 0, -1)
                   : _mm_set_epi16(-1, 0, -1, 0, -1, 0, -1, 0);
}
inline __m128i Green(__m128i a, __m128i b, __m128i a2, __m128i b2, __m128i c) {
  const __m128i g =
      _mm_add_epi16(_mm_srli_epi16(_mm_add_epi16(a, b), 1),
                    _mm_srai_epi16(_mm_sub_epi16(_mm_add_epi16(c, c), _mm_add_epi16(a2, b2)), 2));
  return _mm_max_epi16(_mm_min_epi16(g, _mm_max_epi16(a, b)), _mm_min_epi16(a, b));
}

// Green of eight columns: 8-bit samples in 16-bit lanes.
struct Green8 {
  static __m128i Load(const uint8_t* p) { return Load8(p); }
  static void Store(uint8_t* row, int c, __m128i v) { Store8(row + c, v); }
  static __m128i Green(__m128i a, __m128i b, __m128i a2, __m128i b2, __m128i c) {
    return vec::Green(a, b, a2, b2, c);
  }
};
// Green of eight columns of 16-bit samples, as unsigned 16-bit lanes. The average is the
// rounded-up average less the dropped half; the quarter of the second difference is formed in
// 32 bits (it lies within -32768..32767); the sum is kept between a and b by unsigned
// saturating steps (the average lies between them, so only the quarter's side can cross).
struct Green16 {
  static __m128i Load(const uint16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  }
  static void Store(uint8_t* row, int c, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(row + 2 * c), v);
  }
  static __m128i MinU(__m128i a, __m128i b) { return _mm_subs_epu16(a, _mm_subs_epu16(a, b)); }
  static __m128i MaxU(__m128i a, __m128i b) { return _mm_adds_epu16(_mm_subs_epu16(a, b), b); }
  static __m128i Green(__m128i a, __m128i b, __m128i a2, __m128i b2, __m128i c) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i average =
        _mm_sub_epi16(_mm_avg_epu16(a, b), _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi16(1)));
    // The unpack comes in as a lambda: an intrinsic has no address to pass in an unoptimised
    // build.
    auto quarter = [&](auto unpack) {
      const __m128i c32 = unpack(c, zero);
      return _mm_srai_epi32(
          _mm_sub_epi32(_mm_add_epi32(c32, c32), _mm_add_epi32(unpack(a2, zero), unpack(b2, zero))),
          2);
    };
    const __m128i q =
        _mm_packs_epi32(quarter([](__m128i x, __m128i y) { return _mm_unpacklo_epi16(x, y); }),
                        quarter([](__m128i x, __m128i y) { return _mm_unpackhi_epi16(x, y); }));
    const __m128i up = _mm_max_epi16(q, zero), down = _mm_subs_epi16(zero, _mm_min_epi16(q, zero));
    const __m128i g = _mm_subs_epu16(_mm_adds_epu16(average, up), down);
    return MinU(MaxU(g, MinU(a, b)), MaxU(a, b));
  }
};

// A plane's sample at a column and its sums over the row's, the column's and the diagonal
// neighbours, for eight columns from c.
struct Around {
  __m128i centre, row, column, diagonal;
};
inline Around Sums(const uint8_t* up, const uint8_t* mid, const uint8_t* down, int c) {
  return {Load8(mid + c), _mm_add_epi16(Load8(mid + c - 1), Load8(mid + c + 1)),
          _mm_add_epi16(Load8(up + c), Load8(down + c)),
          _mm_add_epi16(_mm_add_epi16(Load8(up + c - 1), Load8(up + c + 1)),
                        _mm_add_epi16(Load8(down + c - 1), Load8(down + c + 1)))};
}

struct Ycc {
  __m128i y, cb, cr;
};
// Lanes of the column after: m's last seven, then next's first.
inline Ycc ShiftOut(const Ycc& next, const Ycc& m) {
  return {_mm_alignr_epi8(next.y, m.y, 2), _mm_alignr_epi8(next.cb, m.cb, 2),
          _mm_alignr_epi8(next.cr, m.cr, 2)};
}
// Red and blue interleaved as bytes meet their weights in one multiply-add per component (the
// pair sums stay within -9690..28560, below saturation); green's weights go separately, 129 as
// a shift and an add. The luma sum reaches 56228 and is shifted as unsigned.
constexpr short kWeights(int onRed, int onBlue) {
  return static_cast<short>(static_cast<uint16_t>((onRed & 0xFF) | ((onBlue & 0xFF) << 8)));
}
inline Ycc ToYcc(const uint8_t* r, const uint8_t* g, const uint8_t* b, int c) {
  const __m128i rb = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(r + c)),
                                       _mm_loadl_epi64(reinterpret_cast<const __m128i*>(b + c)));
  const __m128i G = Load8(g + c);
  const __m128i k128 = _mm_set1_epi16(128);
  Ycc o;
  o.y = _mm_srli_epi16(
      _mm_add_epi16(_mm_add_epi16(_mm_maddubs_epi16(rb, _mm_set1_epi16(kWeights(66, 25))),
                                  _mm_add_epi16(_mm_slli_epi16(G, 7), G)),
                    k128),
      8);
  // (v + 128) >> 8 of a signed sum in one rounding high multiply by 128: (128 v + 2^14) >> 15
  const __m128i k128w = _mm_set1_epi16(128);
  o.cb = _mm_mulhrs_epi16(_mm_sub_epi16(_mm_maddubs_epi16(rb, _mm_set1_epi16(kWeights(-38, 112))),
                                        _mm_mullo_epi16(G, _mm_set1_epi16(74))),
                          k128w);
  o.cr = _mm_mulhrs_epi16(_mm_sub_epi16(_mm_maddubs_epi16(rb, _mm_set1_epi16(kWeights(112, -18))),
                                        _mm_mullo_epi16(G, _mm_set1_epi16(94))),
                          k128w);
  return o;
}
// Luma distance and squared chroma distance in 16-bit lanes. Chroma of 8-bit samples lies in
// -112..112, and the largest squared distance, between the colours of opposite corners of the
// cube (green and magenta, 148^2 + 188^2), stays below 58000 even with the rounding: each square
// is exact as an unsigned low half and so is their sum. The sum is offset by 32768 so that
// signed comparisons order it.
struct Dist {
  __m128i y, c;
};
inline Dist Distance(const Ycc& m, const Ycc& n) {
  const __m128i dcb = _mm_sub_epi16(m.cb, n.cb), dcr = _mm_sub_epi16(m.cr, n.cr);
  const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(dcb, dcb), _mm_mullo_epi16(dcr, dcr));
  return {_mm_abs_epi16(_mm_sub_epi16(m.y, n.y)), _mm_xor_si128(sum, _mm_set1_epi16(-32768))};
}
// The distances of the column before: the last lane of `before`, then d's first seven.
inline Dist ShiftIn(const Dist& d, const Dist& before) {
  return {_mm_alignr_epi8(d.y, before.y, 14), _mm_alignr_epi8(d.c, before.c, 14)};
}
// All-ones lanes where a distance exceeds its threshold (the neighbour does not count).
inline __m128i Fails(const Dist& d, __m128i eY, __m128i eC) {
  return _mm_or_si128(_mm_cmpgt_epi16(d.y, eY), _mm_cmpgt_epi16(d.c, eC));
}

// Votes of eight columns, from each result's (V, H) distances to the left, right, up and down
// neighbours: the thresholds, and fails V - fails H (masks are -1 where a neighbour fails, so
// this is count H - count V).
template <class Dist, class Thresholds>
inline void StoreVotes(const Dist (&d)[2][4], int8_t* out, Thresholds thresholds) {
  const auto e = thresholds(d);
  __m128i vote = _mm_setzero_si128();
  for (int k = 0; k < 4; ++k) {
    vote = _mm_add_epi16(vote, e.Fails(d[1][k]));
    vote = _mm_sub_epi16(vote, e.Fails(d[0][k]));
  }
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi16(vote, vote));
}

// The vote steps of 8-bit samples.
struct Votes8 {
  using Dist = vec::Dist;
  static Ycc Luma(const uint8_t* r, const uint8_t* g, const uint8_t* b, int c) {
    return ToYcc(r, g, b, c);
  }
  static Dist Distance(const Ycc& m, const Ycc& n) { return vec::Distance(m, n); }
  static Dist ShiftIn(const Dist& d, const Dist& before) { return vec::ShiftIn(d, before); }
  struct Limits {
    __m128i eY, eC;
    __m128i Fails(const Dist& d) const { return vec::Fails(d, eY, eC); }
  };
  static void Store(const Dist (&d)[2][4], int8_t* out) {
    StoreVotes(d, out, [](const Dist(&d)[2][4]) {
      return Limits{
          _mm_min_epi16(_mm_max_epi16(d[1][0].y, d[1][1].y), _mm_max_epi16(d[0][2].y, d[0][3].y)),
          _mm_min_epi16(_mm_max_epi16(d[0][2].c, d[0][3].c), _mm_max_epi16(d[1][0].c, d[1][1].c))};
    });
  }
};

// The vote steps of 16-bit samples. Samples are offset by -32768 into signed lanes, so that
// multiply-adds of pairs give the weighted sums in 32 bits (the offsets' share is a constant);
// luma is kept offset by -32768 (it reaches 56228), chroma lies within +-28672. Distances: the
// absolute difference of two lanes as max - min, exact as an unsigned 16-bit value; the luma
// distance offset again for signed comparisons; squared chroma distances as full 32-bit products
// of those unsigned halves, summed with wrap-around and compared as signed, as the scalar steps do.
struct Votes16 {
  struct Dist {
    __m128i y, lo, hi;  // offset luma distance; squared chroma distance of lanes 0-3, 4-7
  };
  static Ycc Luma(const uint8_t* r, const uint8_t* g, const uint8_t* b, int c) {
    const __m128i bias = _mm_set1_epi16(-32768), one = _mm_set1_epi16(1);
    auto load = [&](const uint8_t* p) {
      return _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 2 * c)), bias);
    };
    const __m128i R = load(r), G = load(g), B = load(b);
    const __m128i rgLo = _mm_unpacklo_epi16(R, G), rgHi = _mm_unpackhi_epi16(R, G);
    const __m128i bLo = _mm_unpacklo_epi16(B, one), bHi = _mm_unpackhi_epi16(B, one);
    // (wr R + wg G + wb B + 128 + k) >> 8 from the offset samples; k makes up the offsets
    auto part = [&](int wr, int wg, int wb, int k) {
      auto pair = [](int low, int high) {
        return _mm_set1_epi32(static_cast<int>((static_cast<uint32_t>(low) & 0xFFFF) |
                                               (static_cast<uint32_t>(high) << 16)));
      };
      const __m128i wRG = pair(wr, wg), wB = pair(wb, 128);
      const __m128i kk = _mm_set1_epi32(k);
      const __m128i lo = _mm_add_epi32(_mm_madd_epi16(rgLo, wRG), _mm_madd_epi16(bLo, wB));
      const __m128i hi = _mm_add_epi32(_mm_madd_epi16(rgHi, wRG), _mm_madd_epi16(bHi, wB));
      return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo, kk), 8),
                             _mm_srai_epi32(_mm_add_epi32(hi, kk), 8));
    };
    // luma: the offsets add 220 * 32768, and -32768 * 256 keeps the result offset
    return {part(66, 129, 25, 220 * 32768 - 32768 * 256), part(-38, -74, 112, 0),
            part(112, -94, -18, 0)};
  }
  static __m128i Absolute(__m128i a, __m128i b) {
    return _mm_sub_epi16(_mm_max_epi16(a, b), _mm_min_epi16(a, b));
  }
  static Dist Distance(const Ycc& m, const Ycc& n) {
    const __m128i dcb = Absolute(m.cb, n.cb), dcr = Absolute(m.cr, n.cr);
    const __m128i cbLow = _mm_mullo_epi16(dcb, dcb), cbHigh = _mm_mulhi_epu16(dcb, dcb);
    const __m128i crLow = _mm_mullo_epi16(dcr, dcr), crHigh = _mm_mulhi_epu16(dcr, dcr);
    return {_mm_xor_si128(Absolute(m.y, n.y), _mm_set1_epi16(-32768)),
            _mm_add_epi32(_mm_unpacklo_epi16(cbLow, cbHigh), _mm_unpacklo_epi16(crLow, crHigh)),
            _mm_add_epi32(_mm_unpackhi_epi16(cbLow, cbHigh), _mm_unpackhi_epi16(crLow, crHigh))};
  }
  static Dist ShiftIn(const Dist& d, const Dist& before) {
    return {_mm_alignr_epi8(d.y, before.y, 14), _mm_alignr_epi8(d.lo, before.hi, 12),
            _mm_alignr_epi8(d.hi, d.lo, 12)};
  }
  static __m128i Max32(__m128i a, __m128i b) { return Blend(_mm_cmpgt_epi32(a, b), a, b); }
  static __m128i Min32(__m128i a, __m128i b) { return Blend(_mm_cmpgt_epi32(a, b), b, a); }
  struct Limits {
    __m128i eY, eLo, eHi;
    __m128i Fails(const Dist& d) const {
      return _mm_or_si128(_mm_cmpgt_epi16(d.y, eY),
                          _mm_packs_epi32(_mm_cmpgt_epi32(d.lo, eLo), _mm_cmpgt_epi32(d.hi, eHi)));
    }
  };
  static void Store(const Dist (&d)[2][4], int8_t* out) {
    StoreVotes(d, out, [](const Dist(&d)[2][4]) {
      return Limits{
          _mm_min_epi16(_mm_max_epi16(d[1][0].y, d[1][1].y), _mm_max_epi16(d[0][2].y, d[0][3].y)),
          Min32(Max32(d[0][2].lo, d[0][3].lo), Max32(d[1][0].lo, d[1][1].lo)),
          Min32(Max32(d[0][2].hi, d[0][3].hi), Max32(d[1][0].hi, d[1][1].hi))};
    });
  }
};

// Sixteen pixels of three planes stored as 48 interleaved bytes R, G, B.
struct InterleaveMasks {
  alignas(16) int8_t m[3][3][16];  // [output block][channel][byte]
};
constexpr InterleaveMasks MakeInterleaveMasks() {
  InterleaveMasks r{};
  for (int block = 0; block < 3; ++block)
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < 16; ++i) {
        const int j = 16 * block + i;
        r.m[block][k][i] = static_cast<int8_t>(j % 3 == k ? j / 3 : -128);
      }
  return r;
}
inline constexpr InterleaveMasks kInterleave = MakeInterleaveMasks();
inline void StoreRgb(uint8_t* out, const __m128i ch[3]) {
  for (int block = 0; block < 3; ++block) {
    __m128i v = _mm_setzero_si128();
    for (int k = 0; k < 3; ++k) {
      v = _mm_or_si128(
          v, _mm_shuffle_epi8(
                 ch[k], _mm_load_si128(reinterpret_cast<const __m128i*>(kInterleave.m[block][k]))));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16 * block), v);
  }
}

}  // namespace vec
#endif

template <class T>
struct Job {
  const T* src;
  std::ptrdiff_t srcStep;  // elements
  int wd, ht;
  T* dst;                  // pixel (x1, y1) of the region
  std::ptrdiff_t dstStep;  // elements
  int x1, y1;
  uint8_t* tmp;
  std::ptrdiff_t tmpStep;  // bytes
  int pGrid;               // position code at (0, 0)
};

// One strip: columns [xs, xe) and rows [ys, ye) are computed, the tie memory of each row
// starting at xs; pixels at columns from job.x1 on are written. kFold reads through the mirror;
// without it the reads must lie inside the image.
template <class T, bool kFold>
class StripRun {
 public:
  static constexpr int kMax = sizeof(T) == 1 ? 255 : 65535;
  // 8-bit data runs eight or sixteen columns a turn, the scalar loops finish each row (and do
  // the columns of a border strip whose reads need the mirror).
  static constexpr bool kVector = KRO_SIMD && sizeof(T) == 1;
  // Green and the votes have vector bodies for both depths.
  static constexpr bool kVectorGreen = KRO_SIMD, kVectorVotes = KRO_SIMD;

  StripRun(const Job<T>& job, int xs, int xe) : j_(job), xs_(xs), n_(xe - xs + 6) {}

  void Run(int ys, int ye) {
    if (!kFold && ((ye - ys) & 1) == 0) {
      RunPairs(ys, ye);
      return;
    }
    // Step t makes green and raw colour of row ys - 3 + t, fills the colours of the row above,
    // votes two rows above and finishes the row three above.
    for (int t = 0; t <= ye - ys + 5; ++t) {
      const int q = ys - 3 + t;
      MakeGreenAndRaw(q, t, true);
      if (t >= 2) FillColours(q - 1, t - 1, false);
      if (t >= 4) Vote(t - 2);
      if (t >= 6) Finish(q - 3, t - 3);
    }
  }

  // The interior (always of even height), two rows a turn. The turn for rows a and a + 1
  // makes green of rows a + 2 and a + 3 and the colours of rows a + 1 and a + 2, votes rows a
  // and a + 1 together (the rows between them serve both) and finishes rows a - 1 and a. The
  // colour ring then holds rows a - 1 to a + 2, all of it, so the raw samples around a colour
  // row are read from the image, which the interior reads directly anyway.
  void RunPairs(int ys, int ye) {
    const int t0 = 3 - ys;  // ring position of row r is r + t0
    for (int r = ys - 3; r <= ys; ++r) MakeGreenAndRaw(r, r + t0, false);
    FillColours(ys - 2, ys - 2 + t0, true);
    FillColours(ys - 1, ys - 1 + t0, true);
    for (int a = ys - 1; a < ye; a += 2) {
      MakeGreenAndRaw(a + 2, a + 2 + t0, false);
      MakeGreenAndRaw(a + 3, a + 3 + t0, false);
      FillColours(a + 1, a + 1 + t0, true);
      FillColours(a + 2, a + 2 + t0, true);
      VotePair(a + t0);
      if (a > ys) Finish(a - 1, a - 1 + t0);
      if (a >= ys) Finish(a, a + t0);
    }
  }

  // Votes of the rows at ring positions t and t + 1.
  void VotePair(int t) {
    int8_t* const out[2] = {VoteRow(t), VoteRow(t + 1)};
    int c = 2;
#if KRO_SIMD
    if constexpr (kVectorVotes) c = VoteVector<2>(t, out);
#endif
    VoteColumns(t, out[0], c, n_ - 2);
    VoteColumns(t + 1, out[1], c, n_ - 2);
  }

  // Votes of ring position t through the vector body (where built) or the scalar steps alone.
  void VoteForTest(int t, bool vector) {
    if (vector) {
      Vote(t);
    } else {
      VoteColumns(t, VoteRow(t), 2, n_ - 2);
    }
  }

 private:
  uint8_t* Row(int k) const { return j_.tmp + k * j_.tmpStep; }
  uint8_t* GreenRow(int t, int h) const { return Row(kGreen + 2 * (t % 5) + h); }  // h: 0 V, 1 H
  // colour: 0 red, 1 blue; h: 0 V, 1 H
  uint8_t* ColourRow(int t, int colour, int h) const {
    return Row(kColour + 5 * (t % 4) + 2 * colour + h);
  }
  int8_t* VoteRow(int t) const { return reinterpret_cast<int8_t*>(Row(kColour + 5 * (t % 4) + 4)); }

  const T* SrcRow(int y) const { return j_.src + (kFold ? Fold(y, j_.ht) : y) * j_.srcStep; }
  int Col(int x) const { return kFold ? Fold(x, j_.wd) : x; }
  int RowCode(int y) const { return j_.pGrid ^ (y & 1); }

  void MakeGreenAndRaw(int q, int t, bool withRaw) {
    const T* r0 = SrcRow(q);
    const T *rm1 = SrcRow(q - 1), *rp1 = SrcRow(q + 1), *rm2 = SrcRow(q - 2), *rp2 = SrcRow(q + 2);
    uint8_t *gv = GreenRow(t, 0), *gh = GreenRow(t, 1);
    const int rowCode = RowCode(q);
    // raw samples go to both results' rows of their colour
    const int rawColour = (rowCode == 0 || rowCode == 3) ? 0 : 1;  // red in this row, or blue
    uint8_t *xv = ColourRow(t, rawColour, 0), *xh = ColourRow(t, rawColour, 1);
    auto scalar = [&](int from, int to) {
      for (int c = from; c < to; ++c) {
        const int x = xs_ - 3 + c;
        const int code = rowCode ^ ((x & 1) * 3);
        const int cx = Col(x);
        const int s = r0[cx];
        if (code & 1) {
          Put<T>(gv, c, s);
          Put<T>(gh, c, s);
        } else {
          Put<T>(gh, c, Green(r0[Col(x - 1)], r0[Col(x + 1)], r0[Col(x - 2)], r0[Col(x + 2)], s));
          Put<T>(gv, c, Green(rm1[cx], rp1[cx], rm2[cx], rp2[cx], s));
          if (withRaw) {
            Put<T>(xv, c, s);
            Put<T>(xh, c, s);
          }
        }
      }
    };
    int c = 0;
#if KRO_SIMD
    if constexpr (kVectorGreen) {
      using G = std::conditional_t<sizeof(T) == 1, vec::Green8, vec::Green16>;
      // Blocks whose reads (columns x - 2 .. x + 9) lie in the image; a border strip does the
      // columns near the left and right edges through the mirror.
      int cMax = n_;
      if (kFold) {
        c = std::max(0, 5 - xs_);
        cMax = j_.wd - 7 - xs_;
        scalar(0, std::min(c, n_));
      }
      for (; c + 8 <= n_ && c <= cMax; c += 8) {
        const int x = xs_ - 3 + c;
        // green sites keep their sample; the raw row goes whole into the colour rows, whose
        // other entries are filled later
        const __m128i keep = vec::ParityMask(((rowCode ^ x) & 1) != 0);
        const T* p = r0 + x;
        const __m128i s0 = G::Load(p);
        G::Store(gh, c,
                 vec::Blend(
                     keep, s0,
                     G::Green(G::Load(p - 1), G::Load(p + 1), G::Load(p - 2), G::Load(p + 2), s0)));
        G::Store(gv, c,
                 vec::Blend(keep, s0,
                            G::Green(G::Load(rm1 + x), G::Load(rp1 + x), G::Load(rm2 + x),
                                     G::Load(rp2 + x), s0)));
        if (withRaw) {
          std::memcpy(xv + c * sizeof(T), p, 8 * sizeof(T));
          std::memcpy(xh + c * sizeof(T), p, 8 * sizeof(T));
        }
      }
    }
#endif
    scalar(std::min(c, n_), n_);
  }

  // Red and blue of row i (ring position t) in both results, from raw samples of rows i - 1,
  // i, i + 1 and the result's green there.
  // fromSource (interior only): the raw samples of rows i - 1, i, i + 1 are read from the
  // image, and the colour's own sites are written too; otherwise they come from the rings.
  void FillColours(int i, int t, bool fromSource) {
    const int rowCode = RowCode(i);
    // the image rows as entries: entry c is column xs - 3 + c
    auto entries = [&](int y) { return reinterpret_cast<const uint8_t*>(SrcRow(y) + (xs_ - 3)); };
    int start = 1;
#if KRO_SIMD
    if constexpr (kVector && !kFold) {
      if (fromSource)
        start = FillFromSourceVector(rowCode, entries(i - 1), entries(i), entries(i + 1), t);
    }
#endif
    for (int h = 0; h < 2; ++h) {
      const uint8_t *gu = GreenRow(t - 1, h), *g0 = GreenRow(t, h), *gd = GreenRow(t + 1, h);
      for (int colour = 0; colour < 2; ++colour) {
        const int own = colour == 0 ? 0 : 2;    // code of the colour's sites
        const int inRow = colour == 0 ? 3 : 1;  // code of green sites in a row of the colour
        uint8_t* x0 = ColourRow(t, colour, h);
        const uint8_t* xu = fromSource ? entries(i - 1) : ColourRow(t - 1, colour, h);
        const uint8_t* xd = fromSource ? entries(i + 1) : ColourRow(t + 1, colour, h);
        const uint8_t* xr = fromSource ? entries(i) : x0;
        int c = start;
#if KRO_SIMD
        if constexpr (kVector) {
          if (!fromSource) c = FillVector(rowCode, own, SrcRow(i), gu, g0, gd, xu, x0, xd);
        }
#endif
        for (; c < n_ - 1; ++c) {
          const int code = rowCode ^ (((xs_ - 3 + c) & 1) * 3);
          if (code == own) {
            if (fromSource) Put<T>(x0, c, Get<T>(xr, c));
            continue;
          }
          const int g = Get<T>(g0, c);
          int v;
          if (code == inRow) {
            v = g + (((Get<T>(xr, c - 1) - Get<T>(g0, c - 1)) +
                      (Get<T>(xr, c + 1) - Get<T>(g0, c + 1))) >>
                     1);
          } else if (code & 1) {
            v = g + (((Get<T>(xu, c) + Get<T>(xd, c)) - (Get<T>(gu, c) + Get<T>(gd, c))) >> 1);
          } else {
            const int sx =
                Get<T>(xu, c - 1) + Get<T>(xu, c + 1) + Get<T>(xd, c - 1) + Get<T>(xd, c + 1);
            const int sg =
                Get<T>(gu, c - 1) + Get<T>(gu, c + 1) + Get<T>(gd, c - 1) + Get<T>(gd, c + 1);
            v = g + ((sx - sg) >> 2);
          }
          Put<T>(x0, c, v < 0 ? 0 : (v > kMax ? kMax : v));
        }
      }
    }
  }

#if KRO_SIMD
  // Vector part of FillColours in the interior: both colours of both results in one pass, the
  // image's raw sums shared by all four. Returns the first column left over.
  int FillFromSourceVector(int rowCode, const uint8_t* ru, const uint8_t* r0, const uint8_t* rd,
                           int t) const {
    using namespace vec;
    const int present = (rowCode == 0 || rowCode == 3) ? 0 : 1;  // this row's colour
    const int presentCode = present == 0 ? 0 : 2;
    int c = 1;
    for (; c + 8 <= n_ - 1; c += 8) {
      const int x = xs_ - 3 + c;
      const __m128i atColour = ParityMask((rowCode ^ ((x & 1) * 3)) == presentCode);
      const vec::Around raw = vec::Sums(ru, r0, rd, c);
      for (int h = 0; h < 2; ++h) {
        const vec::Around g = vec::Sums(GreenRow(t - 1, h), GreenRow(t, h), GreenRow(t + 1, h), c);
        // the row's colour: its sites keep the sample, green sites take the row's differences
        auto plus = [&](__m128i rawSum, __m128i greenSum, int shift) {
          return _mm_add_epi16(
              g.centre, _mm_sra_epi16(_mm_sub_epi16(rawSum, greenSum), _mm_cvtsi32_si128(shift)));
        };
        Store8(ColourRow(t, present, h) + c, Blend(atColour, raw.centre, plus(raw.row, g.row, 1)));
        // the other colour: diagonals at the row's colour sites, the column at green sites
        Store8(ColourRow(t, 1 - present, h) + c,
               Blend(atColour, plus(raw.diagonal, g.diagonal, 2), plus(raw.column, g.column, 1)));
      }
    }
    return c;
  }

  // Vector part of FillColours for one colour and result; returns the first column left over.
  // In a row of the colour, its sites keep the raw sample (rewritten unchanged) and green sites
  // take the row's colour differences; elsewhere green sites take the column's and the other
  // colour's sites the diagonals'.
  int FillVector(int rowCode, int own, const T* raw, const uint8_t* gu, const uint8_t* g0,
                 const uint8_t* gd, const uint8_t* xu, uint8_t* x0, const uint8_t* xd) const {
    using namespace vec;
    const bool colourRow = rowCode == own || (rowCode ^ 3) == own;
    int c = 1;
    for (; c + 8 <= n_ - 1; c += 8) {
      const int x = xs_ - 3 + c;
      const int first = rowCode ^ ((x & 1) * 3);  // code of lane 0
      const __m128i g = Load8(g0 + c);
      __m128i v;
      if (colourRow) {
        // the raw samples are read from the source row (the same values as the scratch row
        // holds at the colour's sites), which keeps the loads clear of the stores just made;
        // a border strip reads the scratch row, whose colour sites are never overwritten
        const uint8_t* r = kFold ? x0 + c : raw + x;
        const __m128i d = _mm_sub_epi16(_mm_add_epi16(Load8(r - 1), Load8(r + 1)),
                                        _mm_add_epi16(Load8(g0 + c - 1), Load8(g0 + c + 1)));
        v = Blend(ParityMask(first == own), Load8(r), _mm_add_epi16(g, _mm_srai_epi16(d, 1)));
      } else {
        const __m128i dv = _mm_sub_epi16(_mm_add_epi16(Load8(xu + c), Load8(xd + c)),
                                         _mm_add_epi16(Load8(gu + c), Load8(gd + c)));
        const __m128i sx = _mm_add_epi16(_mm_add_epi16(Load8(xu + c - 1), Load8(xu + c + 1)),
                                         _mm_add_epi16(Load8(xd + c - 1), Load8(xd + c + 1)));
        const __m128i sg = _mm_add_epi16(_mm_add_epi16(Load8(gu + c - 1), Load8(gu + c + 1)),
                                         _mm_add_epi16(Load8(gd + c - 1), Load8(gd + c + 1)));
        v = Blend(ParityMask((first & 1) != 0), _mm_add_epi16(g, _mm_srai_epi16(dv, 1)),
                  _mm_add_epi16(g, _mm_srai_epi16(_mm_sub_epi16(sx, sg), 2)));
      }
      Store8(x0 + c, v);  // saturation to 0..255 is the clip
    }
    return c;
  }

  // Vector votes of kRows rows (one, or two in the interior) from ring position t on; returns
  // the first column left over. Each middle row's luma-chroma is computed once: the right
  // neighbours come from the block after, shifted in by one column, and since a distance is
  // symmetric a pixel's left distance is its left neighbour's right distance, and the distance
  // between two middle rows serves both. A block reads the entries c - 1 .. c + 8 and writes
  // votes c .. c + 7; votes past n - 3 (the last one needed) land in the row's last two
  // entries, which nothing reads.
  template <int kRows>
  int VoteVector(int t, int8_t* const (&out)[kRows]) const {
    using V = std::conditional_t<sizeof(T) == 1, vec::Votes8, vec::Votes16>;
    using Dist = typename V::Dist;
    const uint8_t* rgb[kRows + 2][2][3];  // row (t - 1 .. t + kRows), result (V, H), channel
    for (int r = 0; r < kRows + 2; ++r)
      for (int h = 0; h < 2; ++h) {
        rgb[r][h][0] = ColourRow(t - 1 + r, 0, h);
        rgb[r][h][1] = GreenRow(t - 1 + r, h);
        rgb[r][h][2] = ColourRow(t - 1 + r, 1, h);
      }
    auto at = [&](int r, int h, int c) {
      return V::Luma(rgb[r][h][0], rgb[r][h][1], rgb[r][h][2], c);
    };
    int c = 2;
    if (c + 9 > n_) return c;
    vec::Ycc mid[2][kRows];
    for (int h = 0; h < 2; ++h)
      for (int r = 0; r < kRows; ++r) mid[h][r] = at(1 + r, h, c);
    Dist lastRight[2][kRows];
    for (; c + 9 <= n_; c += 8) {
      Dist d[kRows][2][4];  // row; result (V, H); left, right, up, down
      const bool haveNext = c + 16 <= n_;
      for (int h = 0; h < 2; ++h) {
        d[0][h][2] = V::Distance(mid[h][0], at(0, h, c));
        for (int r = 0; r + 1 < kRows; ++r) {
          d[r][h][3] = d[r + 1][h][2] = V::Distance(mid[h][r], mid[h][r + 1]);
        }
        d[kRows - 1][h][3] = V::Distance(mid[h][kRows - 1], at(kRows + 1, h, c));
        for (int r = 0; r < kRows; ++r) {
          const vec::Ycc m = mid[h][r];
          const vec::Ycc next = haveNext ? at(1 + r, h, c + 8) : m;
          d[r][h][1] = V::Distance(m, haveNext ? vec::ShiftOut(next, m) : at(1 + r, h, c + 1));
          d[r][h][0] = c == 2 ? V::Distance(m, at(1 + r, h, c - 1))
                              : V::ShiftIn(d[r][h][1], lastRight[h][r]);
          lastRight[h][r] = d[r][h][1];
          mid[h][r] = next;
        }
      }
      for (int r = 0; r < kRows; ++r) V::Store(d[r], out[r] + c);
    }
    return c;
  }
#endif

  Ycc YccAt(int t, int h, int c) const {
    return ToYcc(Get<T>(ColourRow(t, 0, h), c), Get<T>(GreenRow(t, h), c),
                 Get<T>(ColourRow(t, 1, h), c));
  }

  // Votes of row v (ring position t) for columns xs - 1 .. xe.
  void Vote(int t) {
    int8_t* out = VoteRow(t);
    int c = 2;
#if KRO_SIMD
    if constexpr (kVectorVotes) {
      int8_t* const rows[1] = {out};
      c = VoteVector<1>(t, rows);
    }
#endif
    VoteColumns(t, out, c, n_ - 2);
  }

  void VoteColumns(int t, int8_t* out, int from, int to) const {
    if (from >= to) return;
    Ycc lh = YccAt(t, 1, from - 1), lv = YccAt(t, 0, from - 1);
    Ycc mh = YccAt(t, 1, from), mv = YccAt(t, 0, from);
    for (int c = from; c < to; ++c) {
      const Ycc rh = YccAt(t, 1, c + 1), rv = YccAt(t, 0, c + 1);
      const Ycc uh = YccAt(t - 1, 1, c), uv = YccAt(t - 1, 0, c);
      const Ycc dh = YccAt(t + 1, 1, c), dv = YccAt(t + 1, 0, c);
      const int yhl = DiffY(mh, lh), yhr = DiffY(mh, rh), yhu = DiffY(mh, uh), yhd = DiffY(mh, dh);
      const int yvl = DiffY(mv, lv), yvr = DiffY(mv, rv), yvu = DiffY(mv, uv), yvd = DiffY(mv, dv);
      const int32_t chl = DiffC(mh, lh), chr = DiffC(mh, rh), chu = DiffC(mh, uh),
                    chd = DiffC(mh, dh);
      const int32_t cvl = DiffC(mv, lv), cvr = DiffC(mv, rv), cvu = DiffC(mv, uv),
                    cvd = DiffC(mv, dv);
      const int eY = std::min(std::max(yhl, yhr), std::max(yvu, yvd));
      const int32_t eC = std::min(std::max(cvu, cvd), std::max(chl, chr));
      const int countH = (yhl <= eY && chl <= eC) + (yhr <= eY && chr <= eC) +
                         (yhu <= eY && chu <= eC) + (yhd <= eY && chd <= eC);
      const int countV = (yvl <= eY && cvl <= eC) + (yvr <= eY && cvr <= eC) +
                         (yvu <= eY && cvu <= eC) + (yvd <= eY && cvd <= eC);
      out[c] = static_cast<int8_t>(countH - countV);
      lh = mh, lv = mv, mh = rh, mv = rv;
    }
  }

  // Output row o (ring position t): the 3 x 3 vote sum picks the result, ties keep the last
  // decision of this row's run, which starts horizontal.
  void Finish(int o, int t) {
    const int8_t *vu = VoteRow(t - 1), *v0 = VoteRow(t), *vd = VoteRow(t + 1);
    const uint8_t* rgb[2][3] = {{ColourRow(t, 0, 0), GreenRow(t, 0), ColourRow(t, 1, 0)},
                                {ColourRow(t, 0, 1), GreenRow(t, 1), ColourRow(t, 1, 1)}};
    T* out = j_.dst + (o - j_.y1) * j_.dstStep;
    const int skip = j_.x1 - (xs_ - 3);  // entry of the region's first column
    int last = 1;                        // the last non-zero sum of this run
    auto emit = [&](int c, int s) {
      last = s != 0 ? s : last;
      if (c < skip) return;
      const uint8_t* const* from = rgb[last < 0 ? 0 : 1];
      T* px = out + 3 * static_cast<std::ptrdiff_t>(c - skip);
      px[0] = static_cast<T>(Get<T>(from[0], c));
      px[1] = static_cast<T>(Get<T>(from[1], c));
      px[2] = static_cast<T>(Get<T>(from[2], c));
    };
    int c = 3;
#if KRO_SIMD
    if constexpr (kVector) {
      // the 3 x 3 sums of sixteen columns at once (each within -36..36)
      auto load = [](const int8_t* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
      };
      auto column = [&](int k) {
        return _mm_add_epi8(_mm_add_epi8(load(vu + k), load(v0 + k)), load(vd + k));
      };
      for (; c + 16 <= n_ - 3; c += 16) {
        const __m128i sums = _mm_add_epi8(_mm_add_epi8(column(c - 1), column(c)), column(c + 1));
        if (c < skip) {  // the run starts left of the region: pixel by pixel up to it
          alignas(16) int8_t each[16];
          _mm_store_si128(reinterpret_cast<__m128i*>(each), sums);
          for (int i = 0; i < 16; ++i) emit(c + i, each[i]);
          continue;
        }
        // Each lane takes the last non-zero sum at or before it (the run's last decision
        // before the block fills the lanes in front), in four doubling steps.
        const __m128i zero = _mm_setzero_si128(), carry = _mm_set1_epi8(static_cast<char>(last));
        __m128i v = sums;
        v = vec::Blend(_mm_cmpeq_epi8(v, zero), _mm_alignr_epi8(v, carry, 15), v);
        v = vec::Blend(_mm_cmpeq_epi8(v, zero), _mm_alignr_epi8(v, carry, 14), v);
        v = vec::Blend(_mm_cmpeq_epi8(v, zero), _mm_alignr_epi8(v, carry, 12), v);
        v = vec::Blend(_mm_cmpeq_epi8(v, zero), _mm_alignr_epi8(v, carry, 8), v);
        last = static_cast<int8_t>(_mm_extract_epi16(v, 7) >> 8);
        const __m128i vertical = _mm_cmplt_epi8(v, zero);
        __m128i ch[3];
        for (int k = 0; k < 3; ++k) {
          ch[k] =
              vec::Blend(vertical, _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb[0][k] + c)),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb[1][k] + c)));
        }
        vec::StoreRgb(reinterpret_cast<uint8_t*>(out) + 3 * static_cast<std::ptrdiff_t>(c - skip),
                      ch);
      }
    }
#endif
    for (; c < n_ - 3; ++c) {
      emit(c, vu[c - 1] + v0[c - 1] + vd[c - 1] + vu[c] + v0[c] + vd[c] + vu[c + 1] + v0[c + 1] +
                  vd[c + 1]);
    }
  }

  const Job<T>& j_;
  int xs_, n_;
};

}  // namespace

template <class T>
void VoteRowOf(uint8_t* tmp, int tmpStep, int n, int t, bool vector) {
  Job<T> job{};
  job.tmp = tmp;
  job.tmpStep = tmpStep;
  StripRun<T, false>(job, 3, n - 3).VoteForTest(t, vector);
}
void VoteRow8u(uint8_t* tmp, int tmpStep, int n, int t, bool vector) {
  VoteRowOf<uint8_t>(tmp, tmpStep, n, t, vector);
}
void VoteRow16u(uint8_t* tmp, int tmpStep, int n, int t, bool vector) {
  VoteRowOf<uint16_t>(tmp, tmpStep, n, t, vector);
}

namespace {

template <class T>
kroStatus Demosaic(const T* src, KroRect srcRect, KroSize srcSize, int srcStep, T* dst, int dstStep,
                   int grid, Kro8u* tmp, int tmpStep) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(srcSize, 5, 5));
  if (grid < 0 || grid > 3) return kroStatusBadArgument;
  const Plan plan = PlanStrips(srcRect, srcSize, grid);
  if (plan.empty) return kroStatusOk;
  constexpr bool kWide = sizeof(T) == 2;
  Job<T> job;
  job.src = src;
  job.srcStep = kWide ? (srcStep >> 1) : srcStep;
  job.wd = srcSize.width, job.ht = srcSize.height;
  job.dst = dst;
  job.dstStep = kWide ? dstStep / 2 : dstStep;  // rounds towards zero
  job.x1 = plan.x1, job.y1 = plan.y1;
  job.tmp = tmp;
  job.tmpStep = kWide ? (tmpStep & ~1) : tmpStep;
  job.pGrid = PositionCode(grid, 0, 0);
  const int xEnd = plan.x1 + plan.w1, yEnd = plan.y1 + plan.h1;
  for (int i = 0; i < 5; ++i) {
    const Strip& s = plan.strips[i];
    if (s.width < 1 || s.height < 1) continue;
    const int xe = std::min(s.x + s.width, xEnd);
    const int ys = std::max(s.y, plan.y1), ye = std::min(s.y + s.height, yEnd);
    if (xe <= std::max(s.x, plan.x1) || ye <= ys) continue;
    if (i == 0) {
      StripRun<T, false>(job, s.x, xe).Run(ys, ye);
    } else {
      StripRun<T, true>(job, s.x, xe).Run(ys, ye);
    }
  }
  return kroStatusOk;
}

}  // namespace
}  // namespace kro::ahd

namespace kro::wrap {

kroStatus kroiDemosaicAHD_8u_C1C3R(const Kro8u* src, KroRect srcRect, KroSize srcSize, int srcStep,
                                   Kro8u* dst, int dstStep, int grid, Kro8u* tmp, int tmpStep) {
  return ahd::Demosaic<Kro8u>(src, srcRect, srcSize, srcStep, dst, dstStep, grid, tmp, tmpStep);
}

kroStatus kroiDemosaicAHD_16u_C1C3R(const Kro16u* src, KroRect srcRect, KroSize srcSize,
                                    int srcStep, Kro16u* dst, int dstStep, int grid, Kro8u* tmp,
                                    int tmpStep) {
  return ahd::Demosaic<Kro16u>(src, srcRect, srcSize, srcStep, dst, dstStep, grid, tmp, tmpStep);
}

}  // namespace kro::wrap
