// kroconv demosaic: a Bayer plane to an RGB image through the library's demosaicing exports,
// bilinear with a gradient test for green (CFAToRGB) or adaptive homogeneity-directed
// interpolation (DemosaicAHD), at 8 or 16 bits. The whole plane is one region.
#include <algorithm>
#include <cstdio>

#include "args.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {
namespace {

// One shape for both methods: plane, size, step, output, output step, grid code, scratch rows.
template <class T>
using Run = kroStatus (*)(const T*, KroSize, int, T*, int, int, Kro8u*, int);

struct Method {
  const char* name;
  const char* text;
  Run<Kro8u> run8;
  const char* name8;
  Run<Kro16u> run16;
  const char* name16;
};

#define KRO_BILINEAR(f, T)                                              \
  [](const T* s, KroSize z, int ss, T* d, int ds, int g, Kro8u*, int) { \
    return f(s, KroRect{0, 0, z.width, z.height}, z, ss, d, ds, g, 0);  \
  },                                                                    \
      #f
#define KRO_AHD(f, T)                                                        \
  [](const T* s, KroSize z, int ss, T* d, int ds, int g, Kro8u* t, int ts) { \
    return f(s, KroRect{0, 0, z.width, z.height}, z, ss, d, ds, g, t, ts);   \
  },                                                                         \
      #f

const std::vector<Method>& Methods() {
  static const std::vector<Method> methods = {
#if KRO_HAS_kroiCFAToRGB_8u_C1C3R && KRO_HAS_kroiCFAToRGB_16u_C1C3R
    {"bilinear", "bilinear averages, green at red and blue sites by a gradient test",
     KRO_BILINEAR(kroiCFAToRGB_8u_C1C3R, Kro8u), KRO_BILINEAR(kroiCFAToRGB_16u_C1C3R, Kro16u)},
#endif
#if KRO_HAS_kroiDemosaicAHD_8u_C1C3R && KRO_HAS_kroiDemosaicAHD_16u_C1C3R
    {"ahd", "adaptive homogeneity-directed: each pixel from the more uniform direction",
     KRO_AHD(kroiDemosaicAHD_8u_C1C3R, Kro8u), KRO_AHD(kroiDemosaicAHD_16u_C1C3R, Kro16u)},
#endif
  };
  return methods;
}

const Method& FindMethod(const std::string& name) {
  std::string known;
  for (const Method& m : Methods()) {
    if (name == m.name) return m;
    known += known.empty() ? m.name : std::string(", ") + m.name;
  }
  Fail(kExitUsage, "unknown method '" + name + "' (this build has: " + known + ")");
}

// The adaptive method keeps 30 rows of scratch, each at least (max(width, 6) + 6) samples.
constexpr int kScratchRows = 30;

template <class T>
Image Demosaic(const Image& plane, int grid, Run<T> run, const char* function) {
  const int w = plane.width, h = plane.height, size = static_cast<int>(sizeof(T));
  std::vector<T> src(plane.samples.begin(), plane.samples.end()), dst(src.size() * 3);
  const int scratchStep = (std::max(w, 6) + 6) * size;
  std::vector<Kro8u> scratch(static_cast<size_t>(scratchStep) * kScratchRows);
  CheckStatus(run(src.data(), {w, h}, w * size, dst.data(), w * 3 * size, grid, scratch.data(),
                  scratchStep),
              function);
  Image out;
  out.Resize(w, h, 3, plane.bits);
  std::copy(dst.begin(), dst.end(), out.samples.begin());
  return out;
}

}  // namespace

const std::vector<std::string>& DemosaicMethods() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> n;
    for (const Method& m : Methods()) n.push_back(m.name);
    return n;
  }();
  return names;
}

void DemosaicHelp() {
  std::printf(
      "usage: kroconv demosaic IN OUT --grid rggb|grbg|gbrg|bggr [--method NAME]\n"
      "                        [--size WxH] [--bits 8|16]\n\n"
      "IN is a raw Bayer plane (--size WxH, --bits 8 or 16, 16 little-endian) or a grey\n"
      "PGM/PNG holding the plane. --grid names the colours of the 2x2 cell at the top left,\n"
      "row by row. OUT is PNG (8 bits) or PPM (8 or 16 bits).\n\nmethods in this build:\n");
  for (const Method& m : Methods()) std::printf("  %-9s %s\n", m.name, m.text);
  if (!Methods().empty()) std::printf("The first is the default.\n");
}

int Demosaic(int argc, char** argv) {
  Args a = ParseArgs("demosaic", argc, argv, {"size", "grid", "method", "bits"}, {});
  if (a.positional.size() != 2) Fail(kExitUsage, "demosaic wants an input and an output file");
  const std::string& in = a.positional[0];
  const std::string& out = a.positional[1];
  if (Methods().empty()) Fail(kExitUsage, "this build has no demosaicing family");
  const Method& method = FindMethod(a.Get("method", Methods()[0].name));
  if (!a.Has("grid")) Fail(kExitUsage, "demosaic needs --grid rggb|grbg|gbrg|bggr");
  const int grid = BayerGridCode(a.Get("grid"));
  if (!IsImagePath(out)) Fail(kExitUsage, "cannot tell the kind of " + out + ": use .png or .ppm");
  Progress progress("demosaic " + in, 3);  // reading, demosaicing, writing
  progress.Step(0);
  Image plane;
  if (IsImagePath(in)) {
    if (a.Has("size") || a.Has("bits"))
      Fail(kExitUsage, "--size and --bits are for raw input; " + in + " has its own");
    plane = ReadImage(in);
    if (plane.channels != 1)
      Fail(kExitData, in + ": a Bayer plane is one channel; this image has colour");
  } else {
    int w, h;
    a.GetSize("size", w, h);
    long bits = a.GetInt("bits", 8, 8, 16);
    if (bits != 8 && bits != 16) Fail(kExitUsage, "--bits wants 8 or 16");
    plane = ReadRawBayer(in, w, h, static_cast<int>(bits));
  }
  progress.Step(1);
  Image rgb = plane.bits == 8 ? Demosaic<Kro8u>(plane, grid, method.run8, method.name8)
                              : Demosaic<Kro16u>(plane, grid, method.run16, method.name16);
  progress.Step(2);
  WriteImage(rgb, out);
  return kExitOk;
}

}  // namespace kroconv
