// kroconv model: converts a colour image into another colour model and writes its channels as
// a picture people can look at: the three channels side by side as grey (strip), or stored in
// the R, G and B places of a colour image (packed).
#include <cstdio>

#include "args.h"
#include "colour.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {

void ModelHelp() {
  std::printf(
      "usage: kroconv model IN OUT --to MODEL [--layout strip|packed]\n\n"
      "  strip   (default) the three channels side by side as one grey image, 3W x H\n"
      "  packed  the three channels in the R, G, B places of a colour image\n\n"
      "models in this build:\n");
  for (const Matrix& m : Matrices())
    if (HasForward(m)) std::printf("  %-6s %s\n", m.name, m.text);
}

int Model(int argc, char** argv) {
  Args a = ParseArgs("model", argc, argv, {"to", "layout"}, {});
  if (a.positional.size() != 2) Fail(kExitUsage, "model wants an input and an output image");
  if (!a.Has("to")) Fail(kExitUsage, "model needs --to MODEL (kroconv model --help)");
  const Matrix& m = FindMatrix(a.Get("to"));
  std::string layout = a.Get("layout", "strip");
  if (layout != "strip" && layout != "packed")
    Fail(kExitUsage, "--layout wants strip or packed, not '" + layout + "'");
  Progress progress("model " + a.positional[0], 3);  // reading, converting, writing
  progress.Step(0);
  Image in = ReadImage(a.positional[0]);
  progress.Step(1);
  if (!IsImagePath(a.positional[1]))
    Fail(kExitUsage, "cannot tell the kind of " + a.positional[1] + ": use .png, .ppm or .pgm");
  Yuv f = RgbTo444(in, m);
  Image out;
  const std::vector<uint8_t>* planes[3] = {&f.y, &f.u, &f.v};
  if (layout == "strip") {
    out.Resize(3 * f.width, f.height, 1, 8);
    for (int p = 0; p < 3; ++p)
      for (int y = 0; y < f.height; ++y)
        for (int x = 0; x < f.width; ++x)
          out.At(p * f.width + x, y, 0) = (*planes[p])[static_cast<size_t>(y) * f.width + x];
  } else {
    out.Resize(f.width, f.height, 3, 8);
    for (size_t i = 0; i < f.y.size(); ++i)
      for (int p = 0; p < 3; ++p) out.samples[i * 3 + p] = (*planes[p])[i];
  }
  progress.Step(2);
  WriteImage(out, a.positional[1]);
  return kExitOk;
}

}  // namespace kroconv
