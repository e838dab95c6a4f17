// Bayer samples to interleaved RGB, 8u and 16u. Integer only: every missing colour is a rounded
// average of its nearest sites, except green at red and blue sites of the interior, which
// follows the direction of the smaller gradient over two pixels.
//
// Notation of the averages around a site (all sums exact, rounding constant, then a shift):
//   Mh = (W + E + 1) >> 1              Mv = (N + S + 1) >> 1
//   M4 = (N + W + E + S + 2) >> 2      Md = (NW + NE + SW + SE + 2) >> 2
#include "sensor/cfa_to_rgb.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/entry.h"

namespace kro::cfa {
namespace {

// ---- Frame: the two outer rows and columns on each side, scalar -------------------------------

// A corner: the one neighbour in the row (H), the one in the column (V) and the diagonal one.
template <class T>
void CornerPixel(const Source<T>& s, int grid, int x, int y, T* out) {
  const T* c = s.Row(y) + x;
  const std::ptrdiff_t inX = x == 0 ? 1 : -1, inY = y == 0 ? s.step : -s.step;
  const int site = SiteColour(grid, x, y);
  out[site] = c[0];
  if (site == kGreen) {
    out[SiteColour(grid, x + 1, y)] = c[inX];
    out[SiteColour(grid, x, y + 1)] = c[inY];
  } else {
    out[kGreen] = static_cast<T>((c[inX] + c[inY] + 1u) >> 1);
    out[kRed + kBlue - site] = c[inX + inY];
  }
}

// A frame column from row ya to row yb, none of them the top or bottom row: the left or right
// edge (kSide, `inward` the step to the column beside it), or the second frame.
template <class T, bool kSide>
void FrameColumn(const Source<T>& s, int grid, int x, int ya, int yb, std::ptrdiff_t inward, T* out,
                 std::ptrdiff_t outStep) {
  const std::ptrdiff_t step = s.step;
  for (int y = ya; y <= yb; ++y, out += outStep) {
    const T* c = s.Row(y) + x;
    const int site = SiteColour(grid, x, y);
    const uint32_t n = c[-step], south = c[step];
    if (site == kGreen) {
      const int rowColour = SiteColour(grid, x + 1, y);
      out[kRed + kBlue - rowColour] = static_cast<T>((n + south + 1) >> 1);
      out[kGreen] = c[0];
      out[rowColour] = static_cast<T>(kSide ? c[inward] : (c[-1] + c[1] + 1u) >> 1);
    } else {
      out[site] = c[0];
      if constexpr (kSide) {
        out[kGreen] = static_cast<T>((n + south + 2 * c[inward] + 2) >> 2);
        out[kRed + kBlue - site] = static_cast<T>((c[inward - step] + c[inward + step] + 1u) >> 1);
      } else {
        out[kGreen] = static_cast<T>((n + c[-1] + c[1] + south + 2) >> 2);
        out[kRed + kBlue - site] =
            static_cast<T>((c[-step - 1] + c[-step + 1] + c[step - 1] + c[step + 1] + 2u) >> 2);
      }
    }
  }
}

// ---- Rows of the interior and of the frame, scalar ---------------------------------------------

// A row kernel works on n pixels of one row starting at c, whose first site is green when
// kGreenFirst; the row's other colour is kC, and the rows above and below carry the other of
// red and blue, kO. The frame's rows share the kernels' shape: the second frame differs from the
// interior only in green at red and blue sites (M4 instead of the gradient test).

// Green at a red or blue site of the interior: along the direction of the smaller gradient,
// the mean of all four neighbours when the gradients are equal.
template <class T>
uint32_t DirectionalGreen(const T* c, std::ptrdiff_t step) {
  const int32_t dv = c[-2 * step] - c[2 * step], dh = c[-2] - c[2];
  const uint32_t gv = dv < 0 ? -dv : dv, gh = dh < 0 ? -dh : dh;
  if (gv > gh) return (c[-1] + c[1] + 1u) >> 1;
  if (gh > gv) return (c[-step] + c[step] + 1u) >> 1;
  return (c[-step] + c[-1] + c[1] + c[step] + 2u) >> 2;
}

template <class T, bool kGreenFirst, int kC, bool kDirectional>
void BilinearRowScalar(const T* c, std::ptrdiff_t step, int n, T* out) {
  constexpr int kO = kRed + kBlue - kC;
  for (int i = 0; i < n; ++i, ++c, out += 3) {
    if ((i & 1) == (kGreenFirst ? 0 : 1)) {
      out[kC] = static_cast<T>((c[-1] + c[1] + 1u) >> 1);
      out[kGreen] = c[0];
      out[kO] = static_cast<T>((c[-step] + c[step] + 1u) >> 1);
    } else {
      out[kC] = c[0];
      out[kGreen] = static_cast<T>(kDirectional ? DirectionalGreen(c, step)
                                                : (c[-step] + c[-1] + c[1] + c[step] + 2u) >> 2);
      out[kO] = static_cast<T>((c[-step - 1] + c[-step + 1] + c[step - 1] + c[step + 1] + 2u) >> 2);
    }
  }
}

// The top or bottom row between its corners: `inward` is the step to the one row beside it. Along
// the row the two neighbours W and E, across it the one inward sample I and its two neighbours.
template <class T, bool kGreenFirst, int kC>
void EdgeRowScalar(const T* c, std::ptrdiff_t inward, int n, T* out) {
  constexpr int kO = kRed + kBlue - kC;
  for (int i = 0; i < n; ++i, ++c, out += 3) {
    const uint32_t in = c[inward];
    if ((i & 1) == (kGreenFirst ? 0 : 1)) {
      out[kC] = static_cast<T>((c[-1] + c[1] + 1u) >> 1);
      out[kGreen] = c[0];
      out[kO] = static_cast<T>(in);
    } else {
      out[kC] = c[0];
      out[kGreen] = static_cast<T>((c[-1] + c[1] + 2 * in + 2u) >> 2);
      out[kO] = static_cast<T>((c[inward - 1] + c[inward + 1] + 1u) >> 1);
    }
  }
}

// Calls f(greenFirst, colour) with the pattern that starts at (x, y) as compile-time values:
// the colours at (x, y) and (x + 1, y), from the grid and the parity of the absolute position.
template <class F>
void WithPattern(int grid, int x, int y, F&& f) {
  using Red = std::integral_constant<int, kRed>;
  using Blue = std::integral_constant<int, kBlue>;
  const int first = SiteColour(grid, x, y), second = SiteColour(grid, x + 1, y);
  if (first == kGreen) {
    if (second == kRed) {
      f(std::true_type{}, Red{});
    } else {
      f(std::true_type{}, Blue{});
    }
  } else if (first == kRed) {
    f(std::false_type{}, Red{});
  } else {
    f(std::false_type{}, Blue{});
  }
}

// ---- Rows, vector -----------------------------------------------------------------------------

#if KRO_SIMD

template <class T>
struct Lanes;

template <>
struct Lanes<uint8_t> {
  static constexpr int kCount = 16;
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu8(a, b); }
  static __m128i SubSat(__m128i a, __m128i b) { return _mm_subs_epu8(a, b); }
  static __m128i Equal(__m128i a, __m128i b) { return _mm_cmpeq_epi8(a, b); }
  static __m128i EvenLanes() { return _mm_set1_epi16(0x00FF); }
  // Lanes of twice the width, for exact sums of four samples.
  static __m128i AddWide(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
  static __m128i SrlWide(__m128i a, int n) { return _mm_srli_epi16(a, n); }
  static __m128i SllWide(__m128i a, int n) { return _mm_slli_epi16(a, n); }
  static __m128i TwoWide() { return _mm_set1_epi16(2); }
};

template <>
struct Lanes<uint16_t> {
  static constexpr int kCount = 8;
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu16(a, b); }
  static __m128i SubSat(__m128i a, __m128i b) { return _mm_subs_epu16(a, b); }
  static __m128i Equal(__m128i a, __m128i b) { return _mm_cmpeq_epi16(a, b); }
  static __m128i EvenLanes() { return _mm_set1_epi32(0xFFFF); }
  static __m128i AddWide(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
  static __m128i SrlWide(__m128i a, int n) { return _mm_srli_epi32(a, n); }
  static __m128i SllWide(__m128i a, int n) { return _mm_slli_epi32(a, n); }
  static __m128i TwoWide() { return _mm_set1_epi32(2); }
};

template <class T>
__m128i Load(const T* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// m ? a : b, lane by lane.
inline __m128i Select(__m128i m, __m128i a, __m128i b) {
  return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b));
}

// |a - b| of unsigned lanes.
template <class T>
__m128i AbsDiff(__m128i a, __m128i b) {
  return _mm_or_si128(Lanes<T>::SubSat(a, b), Lanes<T>::SubSat(b, a));
}

// (a + b + c + d + 2) >> 2 at the red and blue sites, which are the odd lanes when kOdd, else the
// even ones; zero in the other lanes. The sums are exact in lanes of twice the sample's width.
template <class T, bool kOdd>
__m128i SiteMean4(__m128i a, __m128i b, __m128i c, __m128i d) {
  using L = Lanes<T>;
  constexpr int kBits = 8 * sizeof(T);
  const auto half = [](__m128i v) {
    return kOdd ? L::SrlWide(v, kBits) : _mm_and_si128(v, L::EvenLanes());
  };
  const __m128i sum = L::AddWide(
      L::AddWide(L::AddWide(half(a), half(b)), L::AddWide(half(c), half(d))), L::TwoWide());
  return kOdd ? _mm_andnot_si128(L::EvenLanes(), L::SllWide(sum, kBits - 2)) : L::SrlWide(sum, 2);
}

// pshufb controls that interleave three channel vectors into three vectors of R, G, B samples
// of kBytes bytes each: [output vector][channel][byte].
struct InterleaveControls {
  int8_t m[3][3][16];
};

constexpr InterleaveControls MakeInterleave(int kBytes) {
  InterleaveControls t{};
  for (int j = 0; j < 3; ++j)
    for (int ch = 0; ch < 3; ++ch)
      for (int b = 0; b < 16; ++b) {
        const int at = 16 * j + b, sample = at / kBytes;
        t.m[j][ch][b] =
            static_cast<int8_t>(sample % 3 == ch ? (sample / 3) * kBytes + at % kBytes : -128);
      }
  return t;
}

template <class T>
inline constexpr InterleaveControls kInterleave = MakeInterleave(sizeof(T));

template <class T>
void StoreInterleaved(T* out, const __m128i (&ch)[3]) {
  for (int j = 0; j < 3; ++j) {
    const auto* m = kInterleave<T>.m[j];
    const __m128i v = _mm_or_si128(
        _mm_or_si128(
            _mm_shuffle_epi8(ch[0], _mm_loadu_si128(reinterpret_cast<const __m128i*>(m[0]))),
            _mm_shuffle_epi8(ch[1], _mm_loadu_si128(reinterpret_cast<const __m128i*>(m[1])))),
        _mm_shuffle_epi8(ch[2], _mm_loadu_si128(reinterpret_cast<const __m128i*>(m[2]))));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out) + j, v);
  }
}

// One block of Lanes<T>::kCount pixels of a row (see BilinearRowScalar). The two-term means are
// rounding averages of all lanes, the four-term means are formed at the red and blue sites only.
// In the interior the gradient test runs on all lanes at once, and the lanes where the gradients
// tie are patched with M4.
template <class T, bool kGreenFirst, int kC, bool kDirectional>
__attribute__((always_inline)) inline void BilinearBlock(const T* c, std::ptrdiff_t step, T* out) {
  using L = Lanes<T>;
  constexpr int kO = kRed + kBlue - kC;
  const T* up = c - step;
  const T* down = c + step;
  const __m128i centre = Load(c), west = Load(c - 1), east = Load(c + 1);
  const __m128i north = Load(up), south = Load(down);
  const __m128i mh = L::Avg(west, east), mv = L::Avg(north, south);
  const __m128i md =
      SiteMean4<T, kGreenFirst>(Load(up - 1), Load(up + 1), Load(down - 1), Load(down + 1));
  const __m128i zero = _mm_setzero_si128();
  const __m128i colourSite =
      kGreenFirst ? _mm_andnot_si128(L::EvenLanes(), L::Equal(zero, zero)) : L::EvenLanes();
  __m128i green;
  if constexpr (kDirectional) {
    const __m128i dv = AbsDiff<T>(Load(c - 2 * step), Load(c + 2 * step));
    const __m128i dh = AbsDiff<T>(Load(c - 2), Load(c + 2));
    // Where dv is not above dh green follows the vertical, for the moment also on a tie.
    green = _mm_and_si128(colourSite, Select(L::Equal(L::SubSat(dv, dh), zero), mv, mh));
    // The lanes where the gradients tie take M4 instead, as their mask tells; M4 is formed only
    // for a block that has such lanes.
    const __m128i tie = _mm_and_si128(colourSite, L::Equal(dv, dh));
    if (_mm_movemask_epi8(tie) != 0) {
      green = Select(tie, SiteMean4<T, kGreenFirst>(north, west, east, south), green);
    }
  } else {
    green = SiteMean4<T, kGreenFirst>(north, west, east, south);
  }
  __m128i ch[3];
  ch[kC] = Select(colourSite, centre, mh);
  // green and md hold zeros at the green sites.
  ch[kGreen] = _mm_or_si128(green, _mm_andnot_si128(colourSite, centre));
  ch[kO] = _mm_or_si128(md, _mm_andnot_si128(colourSite, mv));
  StoreInterleaved(out, ch);
}

#endif  // KRO_SIMD

// One row: whole blocks, then the remainder pixel by pixel. Blocks hold an even number of
// pixels, so the remainder starts on a site of the row's first colour.
template <class T, bool kVector, bool kGreenFirst, int kC, bool kDirectional>
void BilinearRow(const T* c, std::ptrdiff_t step, int n, T* out) {
  int i = 0;
#if KRO_SIMD
  if constexpr (kVector) {
    for (; i + Lanes<T>::kCount <= n; i += Lanes<T>::kCount) {
      BilinearBlock<T, kGreenFirst, kC, kDirectional>(c + i, step, out + 3 * i);
    }
  }
#endif
  BilinearRowScalar<T, kGreenFirst, kC, kDirectional>(c + i, step, n - i, out + 3 * i);
}

// One of the four interior kernels: the first row's first site is green when kGreenFirst, its
// other colour kC; the next row has the other pair. Rows go two at a time (the same block of
// columns of both rows in one turn), a last odd row alone.
template <class T, bool kVector, bool kGreenFirst, int kC>
void InteriorKernel(const Source<T>& s, int x0, int y0, int x1, int y1, T* dst,
                    std::ptrdiff_t dstStep) {
  constexpr int kC2 = kRed + kBlue - kC;
  const std::ptrdiff_t step = s.step;
  const int n = x1 - x0 + 1;
  int y = y0;
  for (; y < y1; y += 2, dst += 2 * dstStep) {
    const T* c = s.Row(y) + x0;
    int i = 0;
#if KRO_SIMD
    if constexpr (kVector) {
      for (; i + Lanes<T>::kCount <= n; i += Lanes<T>::kCount) {
        BilinearBlock<T, kGreenFirst, kC, true>(c + i, step, dst + 3 * i);
        BilinearBlock<T, !kGreenFirst, kC2, true>(c + step + i, step, dst + dstStep + 3 * i);
      }
    }
#endif
    BilinearRowScalar<T, kGreenFirst, kC, true>(c + i, step, n - i, dst + 3 * i);
    BilinearRowScalar<T, !kGreenFirst, kC2, true>(c + step + i, step, n - i, dst + dstStep + 3 * i);
  }
  if (y == y1) BilinearRow<T, kVector, kGreenFirst, kC, true>(s.Row(y) + x0, step, n, dst);
}

// Picks the interior kernel by the grid and the parity of the interior's origin, which is an
// absolute position in the image.
template <class T, bool kVector>
void Interior(const Source<T>& s, int grid, int x0, int y0, int x1, int y1, T* dst,
              std::ptrdiff_t dstStep) {
  WithPattern(grid, x0, y0, [&](auto greenFirst, auto colour) {
    InteriorKernel<T, kVector, decltype(greenFirst)::value, decltype(colour)::value>(
        s, x0, y0, x1, y1, dst, dstStep);
  });
}

// ---- Whole window -----------------------------------------------------------------------------

// The window trimmed to the image; the frame first (rows 0 and 1, columns 0, 1, width - 2 and
// width - 1 between rows 2 and height - 3, rows height - 2 and height - 1, each where the window
// reaches it), then the interior. On images of two or three rows or columns some of these lines
// coincide and their pixels are written twice with the same values.
template <class T>
void ConvertWindow(const Source<T>& s, int grid, KroRect r, T* dst, std::ptrdiff_t dstStep) {
  if (r.x >= s.width || r.y >= s.height) return;
  const int xEnd = static_cast<int>(std::min<int64_t>(int64_t{r.x} + r.width, s.width));
  const int yEnd = static_cast<int>(std::min<int64_t>(int64_t{r.y} + r.height, s.height));
  const auto out = [&](int x, int y) {
    return dst + static_cast<std::ptrdiff_t>(y - r.y) * dstStep +
           static_cast<std::ptrdiff_t>(x - r.x) * 3;
  };
  // A frame row: its two ends one by one (corners, or the left and right edges), the pixels
  // between them by a row kernel.
  const auto frameRow = [&](int y) {
    if (y < r.y || y >= yEnd) return;
    const bool edge = y == 0 || y == s.height - 1;
    for (int x : {0, s.width - 1}) {
      if (x < r.x || x >= xEnd) continue;
      if (edge) {
        CornerPixel(s, grid, x, y, out(x, y));
      } else {
        FrameColumn<T, true>(s, grid, x, y, y, x == 0 ? 1 : -1, out(x, y), 0);
      }
    }
    const int xa = std::max(r.x, 1), n = std::min(xEnd, s.width - 1) - xa;
    if (n <= 0) return;
    const T* c = s.Row(y) + xa;
    T* o = out(xa, y);
    WithPattern(grid, xa, y, [&](auto greenFirst, auto colour) {
      constexpr bool kGreenFirst = decltype(greenFirst)::value;
      constexpr int kC = decltype(colour)::value;
      if (edge) {
        EdgeRowScalar<T, kGreenFirst, kC>(c, y == 0 ? s.step : -s.step, n, o);
      } else {
        BilinearRow<T, KRO_SIMD != 0, kGreenFirst, kC, false>(c, s.step, n, o);
      }
    });
  };
  const auto frameColumn = [&](int x) {
    if (x < r.x || x >= xEnd) return;
    const int ya = std::max(r.y, 2), yb = std::min(yEnd - 1, s.height - 3);
    if (yb < ya) return;
    if (x == 0 || x == s.width - 1) {
      FrameColumn<T, true>(s, grid, x, ya, yb, x == 0 ? 1 : -1, out(x, ya), dstStep);
    } else {
      FrameColumn<T, false>(s, grid, x, ya, yb, 0, out(x, ya), dstStep);
    }
  };
  frameRow(0);
  if (s.height >= 3) frameRow(1);
  frameColumn(0);
  frameColumn(1);
  frameColumn(s.width - 2);
  frameColumn(s.width - 1);
  frameRow(s.height - 2);
  frameRow(s.height - 1);

  const int x0 = std::max(r.x, 2), y0 = std::max(r.y, 2);
  const int x1 = std::min(xEnd - 1, s.width - 3), y1 = std::min(yEnd - 1, s.height - 3);
  if (x1 < x0 || y1 < y0) return;
  Interior<T, KRO_SIMD != 0>(s, grid, x0, y0, x1, y1, out(x0, y0), dstStep);
}

template <class T>
kroStatus CfaToRgb(const T* src, KroRect srcRect, KroSize srcSize, int srcStep, T* dst, int dstStep,
                   int grid) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(srcSize, 2, 2));
  if (grid < 0 || grid > 3) return kroStatusBadArgument;
  // Byte steps become element steps; a 16-bit step loses its low bit.
  constexpr int kShift = sizeof(T) == 2 ? 1 : 0;
  const Source<T> s{src, static_cast<std::ptrdiff_t>(srcStep >> kShift), srcSize.width,
                    srcSize.height};
  ConvertWindow(s, grid, srcRect, dst, static_cast<std::ptrdiff_t>(dstStep >> kShift));
  return kroStatusOk;
}

}  // namespace

template <class T>
void InteriorScalar(const Source<T>& s, int grid, int x0, int y0, int x1, int y1, T* dst,
                    std::ptrdiff_t dstStep) {
  Interior<T, false>(s, grid, x0, y0, x1, y1, dst, dstStep);
}
template void InteriorScalar(const Source<uint8_t>&, int, int, int, int, int, uint8_t*,
                             std::ptrdiff_t);
template void InteriorScalar(const Source<uint16_t>&, int, int, int, int, int, uint16_t*,
                             std::ptrdiff_t);

#if KRO_SIMD
template <class T>
void InteriorVector(const Source<T>& s, int grid, int x0, int y0, int x1, int y1, T* dst,
                    std::ptrdiff_t dstStep) {
  Interior<T, true>(s, grid, x0, y0, x1, y1, dst, dstStep);
}
template void InteriorVector(const Source<uint8_t>&, int, int, int, int, int, uint8_t*,
                             std::ptrdiff_t);
template void InteriorVector(const Source<uint16_t>&, int, int, int, int, int, uint16_t*,
                             std::ptrdiff_t);
#endif

}  // namespace kro::cfa

namespace kro::wrap {

// interpolation names a method; there is one, and the argument is read by nothing.
kroStatus kroiCFAToRGB_8u_C1C3R(const Kro8u* src, KroRect srcRect, KroSize srcSize, int srcStep,
                                Kro8u* dst, int dstStep, int grid, int /*interpolation*/) {
  return cfa::CfaToRgb(src, srcRect, srcSize, srcStep, dst, dstStep, grid);
}

kroStatus kroiCFAToRGB_16u_C1C3R(const Kro16u* src, KroRect srcRect, KroSize srcSize, int srcStep,
                                 Kro16u* dst, int dstStep, int grid, int /*interpolation*/) {
  return cfa::CfaToRgb(src, srcRect, srcSize, srcStep, dst, dstStep, grid);
}

}  // namespace kro::wrap
