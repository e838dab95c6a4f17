// Raw YUV layouts (planar, semi-planar, packed), Y4M, and raw Bayer planes. These only move
// bytes between a file's arrangement and three planes; no sample value is changed.
#include <cstring>

#include "tool.h"

namespace kroconv {

int Yuv::ChromaWidth() const {
  switch (sub) {
    case Sub::k420:
    case Sub::k422: return (width + 1) / 2;
    case Sub::k411: return (width + 3) / 4;
    case Sub::k444: return width;
    case Sub::kMono: return 0;
  }
  return 0;
}

int Yuv::ChromaHeight() const {
  switch (sub) {
    case Sub::k420: return (height + 1) / 2;
    case Sub::kMono: return 0;
    default: return height;
  }
}

void Yuv::Resize(int w, int h, Sub s) {
  width = w, height = h, sub = s;
  y.assign(static_cast<size_t>(w) * h, 0);
  size_t c = static_cast<size_t>(ChromaWidth()) * ChromaHeight();
  u.assign(c, 128);
  v.assign(c, 128);
}

const std::vector<Layout>& Layouts() {
  static const std::vector<Layout> layouts = {
      {"i420", Sub::k420, "4:2:0 planar, Y then U then V"},
      {"yv12", Sub::k420, "4:2:0 planar, Y then V then U"},
      {"nv12", Sub::k420, "4:2:0, Y then interleaved U,V"},
      {"nv21", Sub::k420, "4:2:0, Y then interleaved V,U"},
      {"i422", Sub::k422, "4:2:2 planar, Y then U then V"},
      {"yuy2", Sub::k422, "4:2:2 packed Y0 U Y1 V (even width)"},
      {"uyvy", Sub::k422, "4:2:2 packed U Y0 V Y1 (even width)"},
      {"i411", Sub::k411, "4:1:1 planar, Y then U then V (chroma width (W+3)/4)"},
      {"i444", Sub::k444, "4:4:4 planar, Y then U then V"},
      {"gray", Sub::kMono, "luma plane only"},
  };
  return layouts;
}

const Layout* FindLayout(const std::string& name) {
  for (const Layout& l : Layouts())
    if (name == l.name) return &l;
  return nullptr;
}

const char* SubName(Sub s) {
  switch (s) {
    case Sub::k420: return "4:2:0";
    case Sub::k422: return "4:2:2";
    case Sub::k411: return "4:1:1";
    case Sub::k444: return "4:4:4";
    case Sub::kMono: return "mono";
  }
  return "?";
}

static bool Packed(const Layout& l) { return !std::strcmp(l.name, "yuy2") || !std::strcmp(l.name, "uyvy"); }

size_t FrameBytes(const Layout& layout, int width, int height) {
  Yuv shape;
  shape.width = width, shape.height = height, shape.sub = layout.sub;
  size_t luma = static_cast<size_t>(width) * height;
  return luma + 2 * static_cast<size_t>(shape.ChromaWidth()) * shape.ChromaHeight();
}

static void CheckPackedWidth(const Layout& layout, int width) {
  if (Packed(layout) && width % 2)
    Fail(kExitUsage, std::string(layout.name) + " packs pixel pairs: the width must be even, not " +
                         std::to_string(width));
}

static void Unpack(const uint8_t* p, const Layout& layout, Yuv& f) {
  size_t luma = f.y.size(), chroma = f.u.size();
  std::string n = layout.name;
  if (Packed(layout)) {
    bool yfirst = n == "yuy2";
    for (int r = 0; r < f.height; ++r) {
      for (int c = 0; c < f.width / 2; ++c) {
        const uint8_t* q = p + (static_cast<size_t>(r) * f.width + 2 * c) * 2;
        size_t cy = static_cast<size_t>(r) * f.width + 2 * c;
        size_t cc = static_cast<size_t>(r) * (f.width / 2) + c;
        f.y[cy] = q[yfirst ? 0 : 1];
        f.y[cy + 1] = q[yfirst ? 2 : 3];
        f.u[cc] = q[yfirst ? 1 : 0];
        f.v[cc] = q[yfirst ? 3 : 2];
      }
    }
    return;
  }
  std::memcpy(f.y.data(), p, luma);
  p += luma;
  if (n == "nv12" || n == "nv21") {
    uint8_t* first = n == "nv12" ? f.u.data() : f.v.data();
    uint8_t* second = n == "nv12" ? f.v.data() : f.u.data();
    for (size_t i = 0; i < chroma; ++i) first[i] = p[2 * i], second[i] = p[2 * i + 1];
    return;
  }
  uint8_t* first = n == "yv12" ? f.v.data() : f.u.data();
  uint8_t* second = n == "yv12" ? f.u.data() : f.v.data();
  if (chroma) {
    std::memcpy(first, p, chroma);
    std::memcpy(second, p + chroma, chroma);
  }
}

static void Pack(const Yuv& f, const Layout& layout, uint8_t* p) {
  size_t luma = f.y.size(), chroma = f.u.size();
  std::string n = layout.name;
  if (Packed(layout)) {
    bool yfirst = n == "yuy2";
    for (int r = 0; r < f.height; ++r) {
      for (int c = 0; c < f.width / 2; ++c) {
        uint8_t* q = p + (static_cast<size_t>(r) * f.width + 2 * c) * 2;
        size_t cy = static_cast<size_t>(r) * f.width + 2 * c;
        size_t cc = static_cast<size_t>(r) * (f.width / 2) + c;
        q[yfirst ? 0 : 1] = f.y[cy];
        q[yfirst ? 2 : 3] = f.y[cy + 1];
        q[yfirst ? 1 : 0] = f.u[cc];
        q[yfirst ? 3 : 2] = f.v[cc];
      }
    }
    return;
  }
  std::memcpy(p, f.y.data(), luma);
  p += luma;
  if (n == "nv12" || n == "nv21") {
    const uint8_t* first = n == "nv12" ? f.u.data() : f.v.data();
    const uint8_t* second = n == "nv12" ? f.v.data() : f.u.data();
    for (size_t i = 0; i < chroma; ++i) p[2 * i] = first[i], p[2 * i + 1] = second[i];
    return;
  }
  const uint8_t* first = n == "yv12" ? f.v.data() : f.u.data();
  const uint8_t* second = n == "yv12" ? f.u.data() : f.v.data();
  if (chroma) {
    std::memcpy(p, first, chroma);
    std::memcpy(p + chroma, second, chroma);
  }
}

std::vector<Yuv> ReadRawYuv(const std::string& path, const Layout& layout, int width, int height) {
  CheckPackedWidth(layout, width);
  std::vector<uint8_t> d = ReadWholeFile(path);
  size_t frame = FrameBytes(layout, width, height);
  std::string shape = std::to_string(width) + "x" + std::to_string(height) + " " + layout.name;
  if (d.empty()) Fail(kExitData, path + ": empty file");
  if (d.size() < frame)
    Fail(kExitData, path + ": truncated: " + std::to_string(d.size()) + " bytes, one " + shape +
                        " frame needs " + std::to_string(frame));
  if (d.size() % frame)
    Fail(kExitData, path + ": size " + std::to_string(d.size()) + " is not a whole number of " +
                        shape + " frames (" + std::to_string(frame) + " bytes each)");
  std::vector<Yuv> frames(d.size() / frame);
  for (size_t i = 0; i < frames.size(); ++i) {
    frames[i].Resize(width, height, layout.sub);
    Unpack(d.data() + i * frame, layout, frames[i]);
  }
  return frames;
}

void WriteRawYuv(const std::vector<Yuv>& frames, const Layout& layout, const std::string& path) {
  if (frames.empty()) Fail(kExitData, path + ": nothing to write");
  CheckPackedWidth(layout, frames[0].width);
  size_t frame = FrameBytes(layout, frames[0].width, frames[0].height);
  std::vector<uint8_t> buffer(frame);
  OutFile out(path);
  Progress progress("writing " + path, static_cast<long>(frames.size()));
  for (const Yuv& f : frames) {
    progress.Step(&f - frames.data());
    if (f.sub != layout.sub)
      Fail(kExitUsage, std::string("a ") + SubName(f.sub) + " frame does not fit layout " + layout.name);
    Pack(f, layout, buffer.data());
    out.Write(buffer.data(), buffer.size());
  }
  out.Commit();
}

// ---- Y4M --------------------------------------------------------------------------------------

static const struct {
  const char* tag;
  Sub sub;
} kY4mSubs[] = {{"420jpeg", Sub::k420}, {"420paldv", Sub::k420}, {"420mpeg2", Sub::k420},
                {"420", Sub::k420},     {"422", Sub::k422},      {"411", Sub::k411},
                {"444", Sub::k444},     {"mono", Sub::kMono}};

std::vector<Yuv> ReadY4m(const std::string& path) {
  std::vector<uint8_t> d = ReadWholeFile(path);
  size_t eol = 0;
  while (eol < d.size() && d[eol] != '\n') ++eol;
  std::string header(d.begin(), d.begin() + static_cast<long>(eol));
  if (header.compare(0, 10, "YUV4MPEG2 ") != 0 || eol == d.size())
    Fail(kExitData, path + ": not a Y4M file (no YUV4MPEG2 header line)");
  long width = 0, height = 0;
  Sub sub = Sub::k420;
  size_t at = 10;
  while (at < header.size()) {
    size_t end = header.find(' ', at);
    if (end == std::string::npos) end = header.size();
    std::string token = header.substr(at, end - at);
    at = end + 1;
    if (token.empty()) continue;
    if (token[0] == 'W') width = std::atol(token.c_str() + 1);
    if (token[0] == 'H') height = std::atol(token.c_str() + 1);
    if (token[0] == 'C') {
      bool known = false;
      for (const auto& s : kY4mSubs)
        if (token.substr(1) == s.tag) sub = s.sub, known = true;
      if (!known) Fail(kExitData, path + ": Y4M colour space " + token.substr(1) + " is not 8-bit 4:2:0, 4:2:2, 4:1:1, 4:4:4 or mono");
    }
  }
  if (width < 1 || height < 1 || width > 65535 || height > 65535)
    Fail(kExitData, path + ": Y4M header without a usable size");
  const char* name = sub == Sub::k420 ? "i420" : sub == Sub::k422 ? "i422" : sub == Sub::k411 ? "i411" : sub == Sub::k444 ? "i444" : "gray";
  const Layout& layout = *FindLayout(name);
  size_t frame = FrameBytes(layout, static_cast<int>(width), static_cast<int>(height));
  std::vector<Yuv> frames;
  at = eol + 1;
  while (at < d.size()) {
    if (d.size() - at < 5 || std::memcmp(d.data() + at, "FRAME", 5) != 0)
      Fail(kExitData, path + ": damaged Y4M: frame " + std::to_string(frames.size()) + " has no FRAME line");
    while (at < d.size() && d[at] != '\n') ++at;
    ++at;
    if (at > d.size() || d.size() - at < frame)
      Fail(kExitData, path + ": truncated Y4M: frame " + std::to_string(frames.size()) + " is incomplete");
    frames.emplace_back();
    frames.back().Resize(static_cast<int>(width), static_cast<int>(height), sub);
    Unpack(d.data() + at, layout, frames.back());
    at += frame;
  }
  if (frames.empty()) Fail(kExitData, path + ": Y4M file without frames");
  return frames;
}

void WriteY4m(const std::vector<Yuv>& frames, const std::string& path) {
  if (frames.empty()) Fail(kExitData, path + ": nothing to write");
  const Yuv& f0 = frames[0];
  const char* tag = "420jpeg";
  for (const auto& s : kY4mSubs)
    if (s.sub == f0.sub) {
      tag = s.tag;
      break;
    }
  const char* name = f0.sub == Sub::k420 ? "i420" : f0.sub == Sub::k422 ? "i422" : f0.sub == Sub::k411 ? "i411" : f0.sub == Sub::k444 ? "i444" : "gray";
  const Layout& layout = *FindLayout(name);
  std::string header = "YUV4MPEG2 W" + std::to_string(f0.width) + " H" + std::to_string(f0.height) +
                       " F25:1 Ip A1:1 C" + tag + "\n";
  std::vector<uint8_t> buffer(FrameBytes(layout, f0.width, f0.height));
  OutFile out(path);
  out.Write(header.data(), header.size());
  Progress progress("writing " + path, static_cast<long>(frames.size()));
  for (const Yuv& f : frames) {
    progress.Step(&f - frames.data());
    Pack(f, layout, buffer.data());
    out.Write("FRAME\n", 6);
    out.Write(buffer.data(), buffer.size());
  }
  out.Commit();
}

// ---- Bayer ------------------------------------------------------------------------------------

// Indexed by the library's grid code: the name, and the channel at the four sites of the cell
// at (0, 0), (1, 0), (0, 1), (1, 1).
static const struct {
  const char* name;
  int sites[4];
} kGrids[] = {{"bggr", {2, 1, 1, 0}}, {"rggb", {0, 1, 1, 2}}, {"gbrg", {1, 2, 0, 1}}, {"grbg", {1, 0, 2, 1}}};

int BayerGridCode(const std::string& name) {
  for (int code = 0; code < 4; ++code)
    if (name == kGrids[code].name) return code;
  Fail(kExitUsage, "unknown Bayer grid '" + name + "' (rggb, grbg, gbrg, bggr)");
}

int BayerSite(int code, int x, int y) { return kGrids[code].sites[(y & 1) * 2 + (x & 1)]; }

Image ReadRawBayer(const std::string& path, int width, int height, int bits) {
  std::vector<uint8_t> d = ReadWholeFile(path);
  size_t need = static_cast<size_t>(width) * height * (bits / 8);
  std::string shape = std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(bits) + "-bit";
  if (d.size() < need)
    Fail(kExitData, path + ": truncated: " + std::to_string(d.size()) + " bytes, a " + shape +
                        " Bayer plane needs " + std::to_string(need));
  if (d.size() != need)
    Fail(kExitData, path + ": size " + std::to_string(d.size()) + " does not fit a " + shape +
                        " Bayer plane (" + std::to_string(need) + " bytes)");
  Image plane;
  plane.Resize(width, height, 1, bits);
  for (size_t i = 0; i < plane.samples.size(); ++i)
    plane.samples[i] = bits == 8 ? d[i] : static_cast<uint16_t>(d[2 * i] | d[2 * i + 1] << 8);
  return plane;
}

void WriteRawBayer(const Image& plane, const std::string& path) {
  std::vector<uint8_t> body;
  for (uint16_t s : plane.samples) {
    body.push_back(static_cast<uint8_t>(s));
    if (plane.bits == 16) body.push_back(static_cast<uint8_t>(s >> 8));
  }
  OutFile out(path);
  out.Write(body.data(), body.size());
  out.Commit();
}

}  // namespace kroconv
