// Colour conversion through the library: the matrices this build has, and full-resolution
// conversion of an RGB image to three planes and back.
#pragma once

#include <string>
#include <vector>

#include "tool.h"

namespace kroconv {

struct Matrix {
  const char* name;
  const char* text;
};
// The matrices whose exports this build has (empty without colour families).
const std::vector<Matrix>& Matrices();
const Matrix& FindMatrix(const std::string& name);  // fails naming the choices

// Whether this build can convert RGB to the matrix's YUV (some matrices only decode).
bool HasForward(const Matrix& m);

// RGB (8-bit, 3 channels) to a 4:4:4 frame and back.
Yuv RgbTo444(const Image& rgb, const Matrix& m);
Image Rgb444ToImage(const Yuv& frame, const Matrix& m);

}  // namespace kroconv
