// 4:2:0 through the library: RGB images to 4:2:0 frames and back with the subsampling exports.
// One entry per matrix; each of its functions exists only when the build's export list has it
// (KRO_HAS_<name>).
#include <algorithm>
#include <utility>

#include "colour.h"
#include "commands.h"
#include "krocc.h"

namespace kroconv {
namespace {

using Encode3 = kroStatus (*)(const Kro8u*, int, Kro8u* const*, const int*, KroSize);
using Encode2 = kroStatus (*)(const Kro8u*, int, Kro8u*, int, Kro8u*, int, KroSize);
using Decode3 = kroStatus (*)(const Kro8u* const*, const int*, Kro8u*, int, KroSize);
using Decode2 = kroStatus (*)(const Kro8u*, int, const Kro8u*, int, Kro8u*, int, KroSize);

template <class F>
struct Fn {
  F call = nullptr;
  const char* name = "";
};

// An export and its name, for the error line.
#define KRO_FN(f) \
  { f, #f }

struct Entry {
  Matrix420 matrix;
  bool bgr;  // the exports take and give B, G, R; the tool swaps R and B around them
  Fn<Encode3> encode3;
  Fn<Encode2> encode2;  // RGB to Y and Cb,Cr pairs
  Fn<Decode3> decode3;
  Fn<Decode2> decodeUV;  // Y and Cb,Cr pairs to RGB
  Fn<Decode2> decodeVU;  // Y and Cr,Cb pairs to RGB
};

std::vector<Entry> Build() {
  Entry bt601{
      {"bt601", "YCbCr studio range, 601 coefficients", false, false}, false, {}, {}, {}, {}, {}};
  Entry bt709{
      {"bt709", "YCbCr studio range, 709 coefficients", false, false}, true, {}, {}, {}, {}, {}};
  Entry yuv{{"yuv", "analog YUV, U and V offset by 128", false, false}, false, {}, {}, {}, {}, {}};
#if KRO_HAS_kroiRGBToYCbCr420_8u_C3P3R
  bt601.encode3 = KRO_FN(kroiRGBToYCbCr420_8u_C3P3R);
#endif
#if KRO_HAS_kroiRGBToYCbCr420_8u_C3P2R
  bt601.encode2 = KRO_FN(kroiRGBToYCbCr420_8u_C3P2R);
#endif
#if KRO_HAS_kroiYCbCr420ToRGB_8u_P3C3R
  bt601.decode3 = KRO_FN(kroiYCbCr420ToRGB_8u_P3C3R);
#endif
#if KRO_HAS_kroiYCbCr420ToRGB_8u_P2C3R
  bt601.decodeUV = KRO_FN(kroiYCbCr420ToRGB_8u_P2C3R);
#endif
#if KRO_HAS_kroiYCrCb420ToRGB_8u_P2C3R
  bt601.decodeVU = KRO_FN(kroiYCrCb420ToRGB_8u_P2C3R);
#endif
#if KRO_HAS_kroiBGRToYCbCr420_709CSC_8u_C3P3R
  bt709.encode3 = KRO_FN(kroiBGRToYCbCr420_709CSC_8u_C3P3R);
#endif
#if KRO_HAS_kroiBGRToYCbCr420_709CSC_8u_C3P2R
  bt709.encode2 = KRO_FN(kroiBGRToYCbCr420_709CSC_8u_C3P2R);
#endif
#if KRO_HAS_kroiYCbCr420ToBGR_709CSC_8u_P3C3R
  bt709.decode3 = KRO_FN(kroiYCbCr420ToBGR_709CSC_8u_P3C3R);
#endif
#if KRO_HAS_kroiRGBToYUV420_8u_C3P3R
  yuv.encode3 = KRO_FN(kroiRGBToYUV420_8u_C3P3R);
#endif
#if KRO_HAS_kroiYUV420ToRGB_8u_P3C3R
  yuv.decode3 = KRO_FN(kroiYUV420ToRGB_8u_P3C3R);
#endif
  std::vector<Entry> entries;
  for (Entry& e : {std::ref(bt601), std::ref(bt709), std::ref(yuv)}) {
    e.matrix.encodes = e.encode3.call != nullptr;
    e.matrix.decodes = e.decode3.call != nullptr;
    if (e.matrix.encodes || e.matrix.decodes) entries.push_back(e);
  }
  return entries;
}

const std::vector<Entry>& Entries() {
  static const std::vector<Entry> entries = Build();
  return entries;
}

const Entry& FindEntry(const Matrix420& m) {
  for (const Entry& e : Entries())
    if (std::string(e.matrix.name) == m.name) return e;
  Fail(kExitUsage, std::string("unknown matrix ") + m.name);
}

void SwapRB(std::vector<Kro8u>& packed) {
  for (size_t i = 0; i + 2 < packed.size(); i += 3) std::swap(packed[i], packed[i + 2]);
}

}  // namespace

const std::vector<Matrix420>& Matrices420() {
  static const std::vector<Matrix420> list = [] {
    std::vector<Matrix420> l;
    for (const Entry& e : Entries()) l.push_back(e.matrix);
    return l;
  }();
  return list;
}

const Matrix420& Find420(const std::string& name, bool encode) {
  const char* way = encode ? "RGB to 4:2:0" : "4:2:0 to RGB";
  std::string known;
  for (const Matrix420& m : Matrices420()) {
    if (!(encode ? m.encodes : m.decodes)) continue;
    if (name.empty() || name == m.name) return m;
    known += known.empty() ? m.name : std::string(", ") + m.name;
  }
  if (known.empty())
    Fail(kExitUsage, std::string(way) +
                         " needs the library's 4:2:0 conversions, which this build does not have");
  Fail(kExitUsage, "unknown matrix '" + name + "' for " + way + " (this build has: " + known + ")");
}

Yuv RgbTo420(const Image& rgb, const Matrix420& m, Chroma chroma) {
  if (rgb.channels != 3 || rgb.bits != 8)
    Fail(kExitUsage, "4:2:0 conversion wants an 8-bit colour image");
  const Entry& e = FindEntry(m);
  std::vector<Kro8u> packed(rgb.samples.begin(), rgb.samples.end());
  if (e.bgr) SwapRB(packed);
  Yuv f;
  f.Resize(rgb.width, rgb.height, Sub::k420);
  const int cw = f.ChromaWidth(), w = rgb.width;
  const KroSize roi = {rgb.width, rgb.height};
  if (chroma != Chroma::kPlanes && e.encode2.call) {
    std::vector<Kro8u> pairs(2 * f.u.size(), 128);
    CheckStatus(e.encode2.call(packed.data(), 3 * w, f.y.data(), w, pairs.data(), 2 * cw, roi),
                e.encode2.name);
    for (size_t i = 0; i < f.u.size(); ++i) f.u[i] = pairs[2 * i], f.v[i] = pairs[2 * i + 1];
  } else {
    Kro8u* const planes[3] = {f.y.data(), f.u.data(), f.v.data()};
    const int steps[3] = {w, cw, cw};
    CheckStatus(e.encode3.call(packed.data(), 3 * w, planes, steps, roi), e.encode3.name);
  }
  return f;
}

Image Yuv420ToImage(const Yuv& f, const Matrix420& m, Chroma chroma) {
  if (f.sub != Sub::k420) Fail(kExitUsage, "4:2:0 conversion wants a 4:2:0 frame here");
  const Entry& e = FindEntry(m);
  const int cw = f.ChromaWidth(), w = f.width;
  const KroSize roi = {f.width, f.height};
  std::vector<Kro8u> packed(static_cast<size_t>(w) * f.height * 3);
  const Fn<Decode2>& pairs = chroma == Chroma::kPairsUV ? e.decodeUV : e.decodeVU;
  if (chroma != Chroma::kPlanes && pairs.call) {
    const bool uFirst = chroma == Chroma::kPairsUV;
    std::vector<Kro8u> c(2 * f.u.size());
    for (size_t i = 0; i < f.u.size(); ++i)
      c[2 * i] = uFirst ? f.u[i] : f.v[i], c[2 * i + 1] = uFirst ? f.v[i] : f.u[i];
    CheckStatus(pairs.call(f.y.data(), w, c.data(), 2 * cw, packed.data(), 3 * w, roi), pairs.name);
  } else {
    const Kro8u* const planes[3] = {f.y.data(), f.u.data(), f.v.data()};
    const int steps[3] = {w, cw, cw};
    CheckStatus(e.decode3.call(planes, steps, packed.data(), 3 * w, roi), e.decode3.name);
  }
  if (e.bgr) SwapRB(packed);
  Image out;
  out.Resize(f.width, f.height, 3, 8);
  std::copy(packed.begin(), packed.end(), out.samples.begin());
  return out;
}

}  // namespace kroconv
