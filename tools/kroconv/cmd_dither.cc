// kroconv dither: reduces every sample of an image to one of a few evenly spaced levels through
// the library's bit-depth reduction, with no dither, error diffusion (three weightings) or an
// ordered 4x4 matrix, and optional noise on the threshold. Grey images go through the one-channel
// form, colour through the three-channel form; 16-bit PPM/PGM input stays 16-bit.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "args.h"
#include "commands.h"
#include "tool.h"

#if KRO_HAS_kroiReduceBitsGetBufferSize && KRO_HAS_kroiReduceBits_8u_C1R && \
    KRO_HAS_kroiReduceBits_8u_C3R
#define KRO_HAS_DITHER8 1
#else
#define KRO_HAS_DITHER8 0
#endif
#if KRO_HAS_DITHER8 && KRO_HAS_kroiReduceBits_16u_C1R && KRO_HAS_kroiReduceBits_16u_C3R
#define KRO_HAS_DITHER16 1
#else
#define KRO_HAS_DITHER16 0
#endif

namespace kroconv {
namespace {

// The library's dither kinds by code.
const struct {
  const char* name;
  const char* text;
} kKinds[] = {
    {"none", "nearest level"},
    {"floyd", "error diffusion, Floyd-Steinberg weights (two rows)"},
    {"jjn", "error diffusion, Jarvis-Judice-Ninke weights (three rows)"},
    {"stucki", "error diffusion, Stucki weights (three rows)"},
    {"bayer", "ordered dither with a 4x4 Bayer matrix"},
};

int KindCode(const std::string& name) {
  for (int code = 0; code < 5; ++code)
    if (name == kKinds[code].name) return code;
  Fail(kExitUsage, "unknown dither kind '" + name + "' (none, floyd, jjn, stucki, bayer)");
}

#if KRO_HAS_DITHER8
template <class T>
using Reduce = kroStatus (*)(const T*, int, T*, int, KroSize, int, int, int, Kro8u*);

// An export and its name, for the error line.
#define KRO_FN(f) f, #f

template <class T>
struct Forms {
  Reduce<T> c1;
  const char* c1Name;
  Reduce<T> c3;
  const char* c3Name;
};

// The work buffer comes from the size query for the image's layout, width, noise and kind.
template <class T>
void Apply(Image& image, const Forms<T>& forms, int noise, int kind, int levels) {
  const bool grey = image.channels == 1;
  const KroSize roi = {image.width, image.height};
  int bytes = 0;
  CheckStatus(kroiReduceBitsGetBufferSize(grey ? 1 : 3, roi, noise, kind, &bytes),
              "kroiReduceBitsGetBufferSize");
  std::vector<Kro8u> work(static_cast<size_t>(bytes));
  std::vector<T> src(image.samples.begin(), image.samples.end()), dst(src.size());
  const int step = image.width * image.channels * static_cast<int>(sizeof(T));
  CheckStatus((grey ? forms.c1 : forms.c3)(src.data(), step, dst.data(), step, roi, noise, kind,
                                           levels, bytes ? work.data() : nullptr),
              grey ? forms.c1Name : forms.c3Name);
  std::copy(dst.begin(), dst.end(), image.samples.begin());
}
#endif

}  // namespace

bool DitherOffered() { return KRO_HAS_DITHER8 != 0; }

void DitherHelp() {
  std::printf(
      "usage: kroconv dither IN OUT --levels N [--kind KIND] [--noise 0..100]\n\n"
      "Puts every sample of IN (PNG, PPM/PGM; grey or colour) on one of N evenly spaced levels\n"
      "(2..256 for 8-bit images, 2..65536 for 16-bit PPM/PGM) and writes OUT of the same depth.\n"
      "--noise moves each threshold by up to that percentage of a level step (default 0;\n"
      "no effect with kind none).%s\n\nkinds (default floyd):\n",
      KRO_HAS_DITHER16 ? "" : " This build reduces 8-bit images only.");
  for (const auto& k : kKinds) std::printf("  %-7s %s\n", k.name, k.text);
}

int Dither(int argc, char** argv) {
  Args a = ParseArgs("dither", argc, argv, {"levels", "kind", "noise"}, {});
  if (a.positional.size() != 2) Fail(kExitUsage, "dither wants an input and an output image");
  if (!a.Has("levels")) Fail(kExitUsage, "dither needs --levels N");
  const int levels = static_cast<int>(a.GetInt("levels", 2, 2, 65536));
  const int kind = KindCode(a.Get("kind", "floyd"));
  const int noise = static_cast<int>(a.GetInt("noise", 0, 0, 100));
  if (!IsImagePath(a.positional[1]))
    Fail(kExitUsage, "cannot tell the kind of " + a.positional[1] + ": use .png, .ppm or .pgm");
#if KRO_HAS_DITHER8
  Progress progress("dither " + a.positional[0], 3);  // reading, reducing, writing
  progress.Step(0);
  Image image = ReadImage(a.positional[0]);
  progress.Step(1);
  if (image.bits == 8) {
    Apply<Kro8u>(image, {KRO_FN(kroiReduceBits_8u_C1R), KRO_FN(kroiReduceBits_8u_C3R)}, noise, kind,
                 levels);
  } else {
#if KRO_HAS_DITHER16
    Apply<Kro16u>(image, {KRO_FN(kroiReduceBits_16u_C1R), KRO_FN(kroiReduceBits_16u_C3R)}, noise,
                  kind, levels);
#else
    Fail(kExitUsage, a.positional[0] + " has 16-bit samples; this build reduces 8-bit images only");
#endif
  }
  progress.Step(2);
  WriteImage(image, a.positional[1]);
  return kExitOk;
#else
  (void)levels, (void)kind, (void)noise;
  Fail(kExitUsage, "this build has no bit-depth reduction family");
#endif
}

}  // namespace kroconv
