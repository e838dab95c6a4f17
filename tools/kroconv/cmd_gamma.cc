// kroconv gamma: applies the BT.709 transfer curve (or its inverse) to an image's colour
// samples through the library's table forms, at 8 or 16 bits. Grey images go through as
// R = G = B; an alpha channel is left as it is.
#include <cstdio>
#include <vector>

#include "args.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {

#if KRO_HAS_kroiGammaFwd_8u_C3R && KRO_HAS_kroiGammaFwd_16u_AC4R
namespace {

// Runs the C3 or AC4 form of the image's depth on interleaved samples of type T.
template <class T, class C3, class AC4>
void Apply(Image& image, C3 c3, AC4 ac4, const char* c3Name, const char* ac4Name) {
  const int channels = image.channels == 4 ? 4 : 3;
  std::vector<T> buf(static_cast<size_t>(image.width) * image.height * channels);
  for (size_t i = 0, n = static_cast<size_t>(image.width) * image.height; i < n; ++i)
    for (int c = 0; c < channels; ++c)
      buf[i * channels + c] = static_cast<T>(image.samples[i * image.channels + (image.channels == 1 ? 0 : c)]);
  const int step = image.width * channels * static_cast<int>(sizeof(T));
  const KroSize roi = {image.width, image.height};
  if (channels == 4) {
    CheckStatus(ac4(buf.data(), step, roi), ac4Name);
  } else {
    CheckStatus(c3(buf.data(), step, roi), c3Name);
  }
  for (size_t i = 0, n = static_cast<size_t>(image.width) * image.height; i < n; ++i)
    for (int c = 0; c < image.channels; ++c) image.samples[i * image.channels + c] = buf[i * channels + c];
}

}  // namespace
#endif

void GammaHelp() {
  std::printf(
      "usage: kroconv gamma IN OUT [--inverse]\n\n"
      "Applies the BT.709 transfer curve to every colour sample (8 or 16 bits per sample),\n"
      "or with --inverse its inverse. Alpha is kept; grey images stay grey.\n");
}

int Gamma(int argc, char** argv) {
#if KRO_HAS_kroiGammaFwd_8u_C3R && KRO_HAS_kroiGammaFwd_16u_AC4R
  Args a = ParseArgs("gamma", argc, argv, {}, {"inverse"});
  if (a.positional.size() != 2) Fail(kExitUsage, "gamma wants an input and an output image");
  if (!IsImagePath(a.positional[1]))
    Fail(kExitUsage, "cannot tell the kind of " + a.positional[1] + ": use .png, .ppm or .pgm");
  Progress progress("gamma " + a.positional[0], 3);  // reading, converting, writing
  progress.Step(0);
  Image image = ReadImage(a.positional[0]);
  progress.Step(1);
  const bool inverse = a.Has("inverse");
  if (image.bits <= 8) {
    Apply<Kro8u>(image, inverse ? kroiGammaInv_8u_C3IR : kroiGammaFwd_8u_C3IR,
                 inverse ? kroiGammaInv_8u_AC4IR : kroiGammaFwd_8u_AC4IR, "kroiGamma_8u_C3IR",
                 "kroiGamma_8u_AC4IR");
  } else {
    Apply<Kro16u>(image, inverse ? kroiGammaInv_16u_C3IR : kroiGammaFwd_16u_C3IR,
                  inverse ? kroiGammaInv_16u_AC4IR : kroiGammaFwd_16u_AC4IR, "kroiGamma_16u_C3IR",
                  "kroiGamma_16u_AC4IR");
  }
  progress.Step(2);
  WriteImage(image, a.positional[1]);
  return kExitOk;
#else
  (void)argc, (void)argv;
  Fail(kExitUsage, "this build has no gamma family");
#endif
}

}  // namespace kroconv
