// The library's colour exports behind one table. Each entry exists only when the build's export
// list has its functions (KRO_HAS_<name> comes from the list).
#include "colour.h"

#include <utility>

#include "commands.h"
#include "krocc.h"

namespace kroconv {
namespace {

using Forward = kroStatus (*)(const Kro8u*, int, Kro8u* const[3], int, KroSize);
using Inverse = kroStatus (*)(const Kro8u* const[3], int, Kro8u*, int, KroSize);

struct Entry {
  Matrix matrix;
  Forward forward;  // null: this build can only decode with this matrix
  const char* forward_name;
  Inverse inverse;
  const char* inverse_name;
  bool inverse_gives_bgr;  // the inverse writes B, G, R; the tool swaps R and B back
};

const std::vector<Entry>& Entries() {
  static const std::vector<Entry> entries = {
#if defined(KRO_HAS_kroiRGBToYCbCr_8u_C3P3R) && defined(KRO_HAS_kroiYCbCrToRGB_8u_P3C3R)
      {{"bt601", "YCbCr, studio range (Y 16..235, Cb/Cr 16..240), 601 coefficients"},
       kroiRGBToYCbCr_8u_C3P3R, "kroiRGBToYCbCr_8u_C3P3R", kroiYCbCrToRGB_8u_P3C3R,
       "kroiYCbCrToRGB_8u_P3C3R", false},
#endif
#if defined(KRO_HAS_kroiYCbCrToBGR_709CSC_8u_P3C3R)
      {{"bt709", "YCbCr, studio range, 709 coefficients (YUV to RGB only)"}, nullptr, "",
       kroiYCbCrToBGR_709CSC_8u_P3C3R, "kroiYCbCrToBGR_709CSC_8u_P3C3R", true},
#endif
#if defined(KRO_HAS_kroiRGBToYUV_8u_C3P3R) && defined(KRO_HAS_kroiYUVToRGB_8u_P3C3R)
      {{"yuv", "analog YUV: U = 0.492 (B - Y), V = 0.877 (R - Y), offset 128"},
       kroiRGBToYUV_8u_C3P3R, "kroiRGBToYUV_8u_C3P3R", kroiYUVToRGB_8u_P3C3R,
       "kroiYUVToRGB_8u_P3C3R", false},
#endif
  };
  return entries;
}

const Entry& FindEntry(const Matrix& m) {
  for (const Entry& e : Entries())
    if (std::string(e.matrix.name) == m.name) return e;
  Fail(kExitUsage, std::string("unknown matrix ") + m.name);
}

}  // namespace

bool HasForward(const Matrix& m) { return FindEntry(m).forward != nullptr; }

const std::vector<Matrix>& Matrices() {
  static const std::vector<Matrix> list = [] {
    std::vector<Matrix> l;
    for (const Entry& e : Entries()) l.push_back(e.matrix);
    return l;
  }();
  return list;
}

const Matrix& FindMatrix(const std::string& name) {
  std::string known;
  for (const Matrix& m : Matrices()) {
    if (name == m.name) return m;
    known += known.empty() ? m.name : std::string(", ") + m.name;
  }
  if (known.empty()) Fail(kExitUsage, "this build's library has no colour matrix");
  Fail(kExitUsage, "unknown matrix '" + name + "' (this build has: " + known + ")");
}

Yuv RgbTo444(const Image& rgb, const Matrix& m) {
  if (rgb.channels != 3 || rgb.bits != 8) Fail(kExitUsage, "colour conversion wants an 8-bit colour image");
  const Entry& e = FindEntry(m);
  if (!e.forward)
    Fail(kExitUsage, std::string("matrix ") + m.name + " only converts YUV to RGB in this build");
  std::vector<Kro8u> packed(rgb.samples.begin(), rgb.samples.end());
  Yuv f;
  f.Resize(rgb.width, rgb.height, Sub::k444);
  Kro8u* const planes[3] = {f.y.data(), f.u.data(), f.v.data()};
  CheckStatus(e.forward(packed.data(), rgb.width * 3, planes, rgb.width, {rgb.width, rgb.height}),
              e.forward_name);
  return f;
}

Image Rgb444ToImage(const Yuv& f, const Matrix& m) {
  if (f.sub != Sub::k444) Fail(kExitUsage, "colour conversion wants a 4:4:4 frame here");
  const Entry& e = FindEntry(m);
  std::vector<Kro8u> packed(static_cast<size_t>(f.width) * f.height * 3);
  const Kro8u* const planes[3] = {f.y.data(), f.u.data(), f.v.data()};
  CheckStatus(e.inverse(planes, f.width, packed.data(), f.width * 3, {f.width, f.height}),
              e.inverse_name);
  Image out;
  out.Resize(f.width, f.height, 3, 8);
  for (size_t i = 0; i < packed.size(); ++i) out.samples[i] = packed[i];
  if (e.inverse_gives_bgr)
    for (size_t i = 0; i < out.samples.size(); i += 3) std::swap(out.samples[i], out.samples[i + 2]);
  return out;
}

}  // namespace kroconv
