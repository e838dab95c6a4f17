// Shared pieces of kroconv: the error type, the two in-memory picture forms (interleaved images
// and YUV planes) and the readers and writers for every file kind the tool handles.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace kroconv {

// Exit codes: one per class of failure, so scripts can tell them apart.
enum Exit : int {
  kExitOk = 0,
  kExitUsage = 1,    // unknown subcommand, option, layout or value
  kExitFile = 2,     // a file that cannot be opened, read or written
  kExitData = 3,     // a file whose contents do not fit what was asked (truncated, wrong size)
  kExitLibrary = 4,  // the library returned an error status
};

// Every failure ends up here: one line of text and the exit code for it.
struct Error {
  std::string message;
  int code;
};
[[noreturn]] void Fail(int code, const std::string& message);

// An interleaved picture: 1 (grey) or 3 (RGB) channels, samples of 8 or 16 bits held as
// uint16_t whatever the depth.
struct Image {
  int width = 0, height = 0, channels = 0, bits = 8;
  std::vector<uint16_t> samples;
  void Resize(int w, int h, int ch, int b) {
    width = w, height = h, channels = ch, bits = b;
    samples.assign(static_cast<size_t>(w) * h * ch, 0);
  }
  uint16_t& At(int x, int y, int c) {
    return samples[(static_cast<size_t>(y) * width + x) * channels + c];
  }
  uint16_t At(int x, int y, int c) const {
    return samples[(static_cast<size_t>(y) * width + x) * channels + c];
  }
};

// Chroma subsampling of a YUV frame.
enum class Sub { k420, k422, k411, k444, kMono };

// One YUV frame as three 8-bit planes (U and V empty for kMono).
struct Yuv {
  int width = 0, height = 0;
  Sub sub = Sub::k420;
  std::vector<uint8_t> y, u, v;
  int ChromaWidth() const;
  int ChromaHeight() const;
  void Resize(int w, int h, Sub s);
};

// Raw file layouts: plane orders and packings of one subsampling each.
struct Layout {
  const char* name;
  Sub sub;
  const char* text;  // for the help
};
const std::vector<Layout>& Layouts();
const Layout* FindLayout(const std::string& name);  // nullptr if unknown
const char* SubName(Sub s);
size_t FrameBytes(const Layout& layout, int width, int height);

// ---- files ------------------------------------------------------------------------------------

std::vector<uint8_t> ReadWholeFile(const std::string& path);

// Writes to a temporary name beside the target and renames on Commit; a writer destroyed
// without Commit removes its temporary file, so a failure never leaves a partial output.
class OutFile {
 public:
  explicit OutFile(const std::string& path);
  ~OutFile();
  OutFile(const OutFile&) = delete;
  OutFile& operator=(const OutFile&) = delete;
  FILE* get() { return file_; }
  void Write(const void* data, size_t bytes);
  void Commit();

 private:
  std::string path_, temp_;
  FILE* file_ = nullptr;
};

// PNG (8-bit grey or RGB; other PNGs are converted to those on reading) and binary PPM/PGM
// (8 or 16 bits).
Image ReadPng(const std::string& path);
void WritePng(const Image& image, const std::string& path);
Image ReadPnm(const std::string& path);
void WritePnm(const Image& image, const std::string& path);
// Chooses by extension: .png, .ppm, .pgm, .pnm.
bool IsImagePath(const std::string& path);
Image ReadImage(const std::string& path);
void WriteImage(const Image& image, const std::string& path);

// Raw YUV in a named layout, possibly several frames; Y4M with its own header.
std::vector<Yuv> ReadRawYuv(const std::string& path, const Layout& layout, int width, int height);
void WriteRawYuv(const std::vector<Yuv>& frames, const Layout& layout, const std::string& path);
std::vector<Yuv> ReadY4m(const std::string& path);
void WriteY4m(const std::vector<Yuv>& frames, const std::string& path);

// Raw Bayer plane of 8 or 16 bits (16: little-endian) without header.
Image ReadRawBayer(const std::string& path, int width, int height, int bits);
void WriteRawBayer(const Image& plane, const std::string& path);

// Bayer grids by name (rggb, grbg, gbrg, bggr: the colours of the 2x2 cell at pixel (0, 0), row
// by row) and the library's code for each; fails naming the choices.
int BayerGridCode(const std::string& name);
// The channel (0 R, 1 G, 2 B) that a grid of that code holds at pixel (x, y).
int BayerSite(int code, int x, int y);

// ---- labels -----------------------------------------------------------------------------------

// Draws text with the built-in 3x5 font, each font pixel a scale x scale block.
void DrawText(Image& image, int x, int y, const std::string& text, int scale, uint16_t value);
int TextWidth(const std::string& text, int scale);

// ---- progress ---------------------------------------------------------------------------------

// A progress line on stderr, shown only when stderr is a terminal.
class Progress {
 public:
  Progress(const std::string& what, long total);
  ~Progress();
  void Step(long done);

 private:
  std::string what_;
  long total_;
  bool shown_;
  int last_ = -1;
};

}  // namespace kroconv
