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

// ---- 4:2:0 ------------------------------------------------------------------------------------

// The matrices this build has for 4:2:0 (empty without the subsampling families), each with the
// directions it offers.
struct Matrix420 {
  const char* name;
  const char* text;
  bool encodes, decodes;
};
const std::vector<Matrix420>& Matrices420();
// The matrix of that name for the direction, or (empty name) the first that offers it; fails
// naming the choices.
const Matrix420& Find420(const std::string& name, bool encode);

// How the chroma of a 4:2:0 frame is held in its file: three planes, or one plane of pairs with
// U (Cb) or V (Cr) first. Pairs go through the semi-planar exports where the matrix has them.
enum class Chroma { kPlanes, kPairsUV, kPairsVU };

// RGB (8-bit, 3 channels) to a 4:2:0 frame and back. Odd sizes: the library converts the even
// part and warns; the last row and column keep neutral values (frame) or black (image).
Yuv RgbTo420(const Image& rgb, const Matrix420& m, Chroma chroma);
Image Yuv420ToImage(const Yuv& frame, const Matrix420& m, Chroma chroma);

}  // namespace kroconv
