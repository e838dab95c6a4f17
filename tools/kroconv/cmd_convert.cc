// kroconv convert: reads one file kind, writes another. Colour arithmetic is the library's job;
// what is done here without it is moving samples: layouts of the same subsampling, one channel
// taken as grey, a grey picture as luma with neutral chroma, a colour picture sampled onto a
// Bayer grid, and planes laid out for viewing.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "args.h"
#include "colour.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {
namespace {

enum class Kind { kImage, kRawYuv, kY4m, kBayer };

struct Source {
  Kind kind;
  const Layout* layout = nullptr;
};

bool EndsWith(const std::string& s, const std::string& tail) {
  if (s.size() < tail.size()) return false;
  std::string end = s.substr(s.size() - tail.size());
  for (char& c : end) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return end == tail;
}

Source Classify(const std::string& path, const std::string& layout_option, const char* option) {
  Source s;
  if (!layout_option.empty()) {
    if (layout_option == "bayer") {
      s.kind = Kind::kBayer;
      return s;
    }
    s.layout = FindLayout(layout_option);
    if (!s.layout)
      Fail(kExitUsage, "unknown layout '" + layout_option + "' for --" + option +
                           " (kroconv convert --help lists them)");
    s.kind = Kind::kRawYuv;
    return s;
  }
  if (EndsWith(path, ".y4m")) {
    s.kind = Kind::kY4m;
    return s;
  }
  if (IsImagePath(path)) {
    s.kind = Kind::kImage;
    return s;
  }
  Fail(kExitUsage, "cannot tell the kind of " + path + ": give --" + option +
                       " LAYOUT, or use .png, .ppm, .pgm or .y4m");
}

Image TakeChannel(const Image& in, const std::string& channel) {
  int c = channel == "r" ? 0 : channel == "g" ? 1 : channel == "b" ? 2 : -1;
  if (c < 0) Fail(kExitUsage, "--channel wants r, g or b, not '" + channel + "'");
  if (in.channels != 3) Fail(kExitUsage, "--channel needs a colour input");
  Image out;
  out.Resize(in.width, in.height, 1, in.bits);
  for (size_t i = 0; i < out.samples.size(); ++i) out.samples[i] = in.samples[i * 3 + c];
  return out;
}

Image LumaOf(const Yuv& f) {
  Image out;
  out.Resize(f.width, f.height, 1, 8);
  for (size_t i = 0; i < f.y.size(); ++i) out.samples[i] = f.y[i];
  return out;
}

// Y across the top, U and V side by side below it, each at its stored size.
Image PlaneView(const Yuv& f) {
  int cw = f.ChromaWidth(), ch = f.ChromaHeight();
  Image out;
  out.Resize(std::max(f.width, 2 * cw), f.height + ch, 1, 8);
  for (size_t i = 0; i < out.samples.size(); ++i) out.samples[i] = 128;
  for (int y = 0; y < f.height; ++y)
    for (int x = 0; x < f.width; ++x) out.At(x, y, 0) = f.y[static_cast<size_t>(y) * f.width + x];
  for (int y = 0; y < ch; ++y)
    for (int x = 0; x < cw; ++x) {
      out.At(x, f.height + y, 0) = f.u[static_cast<size_t>(y) * cw + x];
      out.At(cw + x, f.height + y, 0) = f.v[static_cast<size_t>(y) * cw + x];
    }
  return out;
}

Yuv GreyAsYuv(const Image& grey, Sub sub) {
  if (grey.bits != 8) Fail(kExitUsage, "YUV output holds 8-bit samples; the input has 16");
  Yuv f;
  f.Resize(grey.width, grey.height, sub);  // chroma starts neutral
  for (size_t i = 0; i < f.y.size(); ++i) f.y[i] = static_cast<uint8_t>(grey.samples[i]);
  return f;
}

[[noreturn]] void NeedsFamily(const std::string& what) {
  Fail(kExitUsage, what + " needs colour conversion that this build's library does not have");
}

// The matrix asked for, or the first this build has for the direction; fails when there is none.
const Matrix& ChooseMatrix(const Args& a, const std::string& what, bool forward) {
  if (Matrices().empty()) NeedsFamily(what);
  if (a.Has("matrix")) return FindMatrix(a.Get("matrix"));
  for (const Matrix& m : Matrices())
    if (!forward || HasForward(m)) return m;
  NeedsFamily(what);
}

bool Offers420(bool encode) {
  for (const Matrix420& m : Matrices420())
    if (encode ? m.encodes : m.decodes) return true;
  return false;
}

// Semi-planar layouts hand their chroma pairs to the library's two-plane forms.
Chroma ChromaOf(const Source& s) {
  if (s.kind != Kind::kRawYuv) return Chroma::kPlanes;
  std::string n = s.layout->name;
  return n == "nv12" ? Chroma::kPairsUV : n == "nv21" ? Chroma::kPairsVU : Chroma::kPlanes;
}

void WriteFrames(const std::vector<Yuv>& frames, const Source& to, const std::string& out) {
  if (to.kind == Kind::kY4m) {
    WriteY4m(frames, out);
    return;
  }
  for (const Yuv& f : frames)
    if (f.sub != to.layout->sub)
      Fail(kExitUsage, std::string(SubName(f.sub)) + " to layout " + to.layout->name + " (" +
                           SubName(to.layout->sub) + ") needs chroma resampling, which this build does not offer");
  WriteRawYuv(frames, *to.layout, out);
}

}  // namespace

void ConvertHelp() {
  std::printf(
      "usage: kroconv convert IN OUT [options]\n\n"
      "File kinds come from the extension (.png .ppm .pgm .pnm .y4m) or from --from/--to:\n"
      "  --from LAYOUT, --to LAYOUT   raw YUV layout, or 'bayer' for a raw Bayer plane\n"
      "  --size WxH                   size of a raw input\n"
      "  --bits 8|16                  sample size of a raw Bayer input (16: little-endian)\n"
      "  --grid rggb|grbg|gbrg|bggr   Bayer grid when writing a mosaic from a colour image\n"
      "  --frame N                    frame of a multi-frame YUV input to write as an image\n"
      "  --channel r|g|b              take one channel of a colour image as grey\n"
      "  --luma                       write the luma plane of a YUV input as a grey image\n"
      "  --planes                     write all planes of a YUV input as one grey image\n"
      "  --matrix NAME                colour matrix between RGB and YUV (default: the first)\n\n"
      "raw YUV layouts:\n");
  for (const Layout& l : Layouts()) std::printf("  %-6s %s\n", l.name, l.text);
  std::printf("\ncolour matrices in this build:%s\n", Matrices().empty() ? " none" : "");
  for (const Matrix& m : Matrices()) std::printf("  %-6s %s\n", m.name, m.text);
  if (!Matrices().empty())
    std::printf("Colour images convert to and from 4:4:4 (i444, or Y4M 4:4:4) at full resolution.\n");
  std::printf("\n4:2:0 matrices in this build:%s\n", Matrices420().empty() ? " none" : "");
  for (const Matrix420& m : Matrices420())
    std::printf("  %-6s %-12s %s\n", m.name,
                m.encodes && m.decodes ? "both ways" : m.encodes ? "to 4:2:0" : "from 4:2:0", m.text);
  if (!Matrices420().empty())
    std::printf(
        "Colour images convert to and from i420, yv12, nv12 and nv21 (chroma averaged over each\n"
        "2x2 block, repeated on the way back); nv12 and nv21 go through the library's two-plane\n"
        "forms where the matrix has them. Odd sizes: the library converts the even part and warns.\n");
  std::printf(
      "\nWithout colour conversion in the library, this moves samples only: image to image,\n"
      "YUV layouts of the same subsampling, a grey image to YUV (neutral chroma), a YUV luma\n"
      "or plane view to an image, a colour image sampled onto a Bayer grid, a Bayer plane to\n"
      "a grey image.\n");
}

int Convert(int argc, char** argv) {
  Args a = ParseArgs("convert", argc, argv, {"from", "to", "size", "bits", "grid", "frame", "channel", "matrix"},
                     {"luma", "planes"});
  if (a.positional.size() != 2)
    Fail(kExitUsage, "convert wants an input and an output file (kroconv convert --help)");
  const std::string& in = a.positional[0];
  const std::string& out = a.positional[1];
  Source from = Classify(in, a.Get("from"), "from");
  Source to = Classify(out, a.Get("to"), "to");
  if (a.Has("luma") && a.Has("planes")) Fail(kExitUsage, "--luma and --planes exclude each other");

  // Reading, then converting and writing (multi-frame output shows its own line per frame).
  Progress progress("convert " + in, 2);
  progress.Step(0);
  if (from.kind == Kind::kImage || from.kind == Kind::kBayer) {
    Image image;
    if (from.kind == Kind::kImage) {
      image = ReadImage(in);
    } else {
      int w, h;
      a.GetSize("size", w, h);
      long bits = a.GetInt("bits", 8, 8, 16);
      if (bits != 8 && bits != 16) Fail(kExitUsage, "--bits wants 8 or 16");
      image = ReadRawBayer(in, w, h, static_cast<int>(bits));
    }
    progress.Step(1);
    if (a.Has("channel")) image = TakeChannel(image, a.Get("channel"));
    switch (to.kind) {
      case Kind::kImage:
        WriteImage(image, out);
        break;
      case Kind::kBayer: {
        if (image.channels == 1) {
          WriteRawBayer(image, out);
          break;
        }
        const int grid = BayerGridCode(a.Get("grid", "rggb"));
        Image plane;
        plane.Resize(image.width, image.height, 1, image.bits);
        for (int y = 0; y < image.height; ++y)
          for (int x = 0; x < image.width; ++x)
            plane.At(x, y, 0) = image.At(x, y, BayerSite(grid, x, y));
        WriteRawBayer(plane, out);
        break;
      }
      case Kind::kRawYuv:
      case Kind::kY4m: {
        if (image.channels != 1 && to.kind == Kind::kRawYuv && to.layout->sub == Sub::k420 &&
            Offers420(true)) {
          const Matrix420& m = Find420(a.Get("matrix"), true);
          WriteFrames({RgbTo420(image, m, ChromaOf(to))}, to, out);
          break;
        }
        if (image.channels != 1) {
          const Matrix& m = ChooseMatrix(a, "a colour image to YUV", true);
          if (to.kind == Kind::kRawYuv && to.layout->sub != Sub::k444)
            Fail(kExitUsage, std::string("a colour image to ") + SubName(to.layout->sub) +
                                 " needs chroma subsampling, which this build does not offer (use --to i444)");
          WriteFrames({RgbTo444(image, m)}, to, out);
          break;
        }
        if (a.Has("matrix")) Fail(kExitUsage, "--matrix applies to colour images; this input is grey");
        Sub sub = to.kind == Kind::kRawYuv ? to.layout->sub : Sub::k420;
        WriteFrames({GreyAsYuv(image, sub)}, to, out);
        break;
      }
    }
    return kExitOk;
  }

  std::vector<Yuv> frames;
  if (from.kind == Kind::kY4m) {
    frames = ReadY4m(in);
  } else {
    int w, h;
    a.GetSize("size", w, h);
    frames = ReadRawYuv(in, *from.layout, w, h);
  }
  progress.Step(1);
  switch (to.kind) {
    case Kind::kRawYuv:
    case Kind::kY4m:
      WriteFrames(frames, to, out);
      break;
    case Kind::kImage: {
      long n = a.GetInt("frame", 0, 0, static_cast<long>(frames.size()) - 1);
      const Yuv& f = frames[static_cast<size_t>(n)];
      if (a.Has("planes"))
        WriteImage(PlaneView(f), out);
      else if (a.Has("luma") || f.sub == Sub::kMono)
        WriteImage(LumaOf(f), out);
      else if (f.sub == Sub::k420 && Offers420(false))
        WriteImage(Yuv420ToImage(f, Find420(a.Get("matrix"), false), ChromaOf(from)), out);
      else if (f.sub == Sub::k444 && !Matrices().empty())
        WriteImage(Rgb444ToImage(f, ChooseMatrix(a, "YUV to a colour image", false)), out);
      else if (f.sub == Sub::k444)
        NeedsFamily("YUV to a colour image (use --luma or --planes to look at the planes)");
      else
        Fail(kExitUsage, std::string(SubName(f.sub)) + " YUV to a colour image needs chroma upsampling, which this "
                         "build does not offer (use --luma or --planes to look at the planes)");
      break;
    }
    case Kind::kBayer:
      Fail(kExitUsage, "YUV to a Bayer plane is not a conversion kroconv makes");
  }
  return kExitOk;
}

}  // namespace kroconv
