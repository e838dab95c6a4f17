// Bayer samples to interleaved RGB: the grid codes, the source image and the interior kernels,
// declared here so that the tests can hold the vector interior against its scalar twin.
//
// A pixel's formula depends on its distance from the border of the whole source image (not of
// the window being converted): the interior, two or more pixels from every border, takes the
// directional green; the second frame and the edges take plain averages of the neighbours that
// exist. The interior runs through one of four kernels, chosen by the colours standing at its
// first pixel and the next, so that the colour of each column within an unrolled pair of
// columns and rows is fixed in the code.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/simd.h"

namespace kro::cfa {

// Channels of the output pixel, also the colour of a site.
enum Colour : int { kRed = 0, kGreen = 1, kBlue = 2 };

// Colours of the 2 x 2 block at (0, 0) of the whole image, [grid][y & 1][x & 1].
inline constexpr int kGridColours[4][2][2] = {
    {{kBlue, kGreen}, {kGreen, kRed}},
    {{kRed, kGreen}, {kGreen, kBlue}},
    {{kGreen, kBlue}, {kRed, kGreen}},
    {{kGreen, kRed}, {kBlue, kGreen}},
};

constexpr int SiteColour(int grid, int x, int y) { return kGridColours[grid][y & 1][x & 1]; }

// The whole source image: its pixel (0, 0), the distance between rows in elements, its size.
template <class T>
struct Source {
  const T* base;
  std::ptrdiff_t step;
  int width, height;
  const T* Row(int y) const { return base + static_cast<std::ptrdiff_t>(y) * step; }
};

// Converts the interior pixels x0..x1 by y0..y1 (inclusive; all of them two or more pixels from
// every border of the image), the output of (x0, y0) at dst. The scalar form is the portable
// build's path and the remainder of every vector row.
template <class T>
void InteriorScalar(const Source<T>& src, int grid, int x0, int y0, int x1, int y1, T* dst,
                    std::ptrdiff_t dstStep);
#if KRO_SIMD
template <class T>
void InteriorVector(const Source<T>& src, int grid, int x0, int y0, int x1, int y1, T* dst,
                    std::ptrdiff_t dstStep);
#endif

}  // namespace kro::cfa
