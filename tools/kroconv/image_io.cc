// Files: whole-file reads, the rename-on-success writer, PNG through libpng's simplified API,
// binary PPM/PGM, and the terminal-only progress line.
#include <png.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tool.h"

namespace kroconv {

void Fail(int code, const std::string& message) { throw Error{message, code}; }

static std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return s;
}

static std::string Extension(const std::string& path) {
  size_t slash = path.find_last_of('/');
  size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  return Lower(path.substr(dot + 1));
}

std::vector<uint8_t> ReadWholeFile(const std::string& path) {
  FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) Fail(kExitFile, "cannot open " + path + ": " + std::strerror(errno));
  std::vector<uint8_t> data;
  uint8_t buffer[1 << 16];
  for (;;) {
    size_t n = std::fread(buffer, 1, sizeof buffer, f);
    data.insert(data.end(), buffer, buffer + n);
    if (n < sizeof buffer) break;
  }
  bool bad = std::ferror(f) != 0;
  int err = errno;
  std::fclose(f);
  if (bad) Fail(kExitFile, "cannot read " + path + ": " + std::strerror(err));
  return data;
}

// ---- OutFile ----------------------------------------------------------------------------------

OutFile::OutFile(const std::string& path) : path_(path) {
  temp_ = path + ".kroconv-" + std::to_string(getpid()) + ".tmp";
  file_ = std::fopen(temp_.c_str(), "wb");
  if (!file_) Fail(kExitFile, "cannot write " + path + ": " + std::strerror(errno));
}

OutFile::~OutFile() {
  if (file_) {
    std::fclose(file_);
    std::remove(temp_.c_str());
  }
}

void OutFile::Write(const void* data, size_t bytes) {
  if (bytes && std::fwrite(data, 1, bytes, file_) != bytes)
    Fail(kExitFile, "cannot write " + path_ + ": " + std::strerror(errno));
}

void OutFile::Commit() {
  bool bad = std::fflush(file_) != 0 || std::ferror(file_);
  int err = errno;
  FILE* f = file_;
  file_ = nullptr;
  if (std::fclose(f) != 0 && !bad) bad = true, err = errno;
  if (bad) {
    std::remove(temp_.c_str());
    Fail(kExitFile, "cannot write " + path_ + ": " + std::strerror(err));
  }
  if (std::rename(temp_.c_str(), path_.c_str()) != 0) {
    err = errno;
    std::remove(temp_.c_str());
    Fail(kExitFile, "cannot write " + path_ + ": " + std::strerror(err));
  }
}

// ---- PNG --------------------------------------------------------------------------------------

Image ReadPng(const std::string& path) {
  std::vector<uint8_t> bytes = ReadWholeFile(path);
  png_image png;
  std::memset(&png, 0, sizeof png);
  png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()))
    Fail(kExitData, path + ": not a readable PNG (" + png.message + ")");
  bool colour = (png.format & PNG_FORMAT_FLAG_COLOR) != 0;
  png.format = colour ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  Image image;
  image.Resize(static_cast<int>(png.width), static_cast<int>(png.height), colour ? 3 : 1, 8);
  std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(png));
  if (!png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr)) {
    std::string message = png.message;
    png_image_free(&png);
    Fail(kExitData, path + ": damaged PNG (" + message + ")");
  }
  for (size_t i = 0; i < pixels.size(); ++i) image.samples[i] = pixels[i];
  return image;
}

void WritePng(const Image& image, const std::string& path) {
  if (image.bits != 8)
    Fail(kExitUsage, path + ": PNG output holds 8-bit samples; write 16-bit data as .pgm/.ppm");
  std::vector<uint8_t> pixels(image.samples.begin(), image.samples.end());
  png_image png;
  std::memset(&png, 0, sizeof png);
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.width);
  png.height = static_cast<png_uint_32>(image.height);
  png.format = image.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  OutFile out(path);
  if (!png_image_write_to_stdio(&png, out.get(), 0, pixels.data(), 0, nullptr))
    Fail(kExitFile, "cannot write " + path + ": " + png.message);
  out.Commit();
}

// ---- PPM / PGM --------------------------------------------------------------------------------

Image ReadPnm(const std::string& path) {
  std::vector<uint8_t> d = ReadWholeFile(path);
  size_t at = 0;
  auto skip_space = [&] {
    for (;;) {
      while (at < d.size() && std::strchr(" \t\r\n", d[at]) && d[at]) ++at;
      if (at < d.size() && d[at] == '#') {
        while (at < d.size() && d[at] != '\n') ++at;
      } else {
        return;
      }
    }
  };
  auto number = [&]() -> long {
    skip_space();
    long v = 0;
    size_t start = at;
    while (at < d.size() && d[at] >= '0' && d[at] <= '9' && v < 100000000) v = v * 10 + (d[at++] - '0');
    if (at == start) Fail(kExitData, path + ": damaged PPM/PGM header");
    return v;
  };
  if (d.size() < 2 || d[0] != 'P' || (d[1] != '5' && d[1] != '6'))
    Fail(kExitData, path + ": not a binary PPM/PGM file (P5 or P6)");
  int channels = d[1] == '6' ? 3 : 1;
  at = 2;
  long w = number(), h = number(), maxval = number();
  if (w < 1 || h < 1 || w > 65535 || h > 65535)
    Fail(kExitData, path + ": image size " + std::to_string(w) + "x" + std::to_string(h) +
                        " out of range");
  if (maxval < 1 || maxval > 65535) Fail(kExitData, path + ": maximum value out of range");
  if (at >= d.size()) Fail(kExitData, path + ": truncated (no pixel data)");
  ++at;  // the single whitespace byte before the samples
  int bits = maxval > 255 ? 16 : 8;
  size_t count = static_cast<size_t>(w) * h * channels;
  size_t need = count * (bits / 8);
  if (d.size() - at < need)
    Fail(kExitData, path + ": truncated: " + std::to_string(d.size() - at) + " bytes of pixels, " +
                        std::to_string(need) + " needed");
  Image image;
  image.Resize(static_cast<int>(w), static_cast<int>(h), channels, bits);
  for (size_t i = 0; i < count; ++i)
    image.samples[i] = bits == 8 ? d[at + i] : static_cast<uint16_t>(d[at + 2 * i] << 8 | d[at + 2 * i + 1]);
  return image;
}

void WritePnm(const Image& image, const std::string& path) {
  std::string ext = Extension(path);
  if (ext == "ppm" && image.channels != 3) Fail(kExitUsage, path + ": a grey image goes to .pgm");
  if (ext == "pgm" && image.channels != 1) Fail(kExitUsage, path + ": a colour image goes to .ppm");
  std::string header = std::string(image.channels == 3 ? "P6" : "P5") + "\n" +
                       std::to_string(image.width) + " " + std::to_string(image.height) + "\n" +
                       (image.bits == 8 ? "255" : "65535") + "\n";
  std::vector<uint8_t> body;
  body.reserve(image.samples.size() * (image.bits / 8));
  for (uint16_t s : image.samples) {
    if (image.bits == 16) body.push_back(static_cast<uint8_t>(s >> 8));
    body.push_back(static_cast<uint8_t>(s));
  }
  OutFile out(path);
  out.Write(header.data(), header.size());
  out.Write(body.data(), body.size());
  out.Commit();
}

bool IsImagePath(const std::string& path) {
  std::string ext = Extension(path);
  return ext == "png" || ext == "ppm" || ext == "pgm" || ext == "pnm";
}

Image ReadImage(const std::string& path) {
  return Extension(path) == "png" ? ReadPng(path) : ReadPnm(path);
}

void WriteImage(const Image& image, const std::string& path) {
  if (Extension(path) == "png")
    WritePng(image, path);
  else
    WritePnm(image, path);
}

// ---- progress ---------------------------------------------------------------------------------

Progress::Progress(const std::string& what, long total)
    : what_(what), total_(total), shown_(isatty(2) != 0) {}

Progress::~Progress() {
  if (shown_ && last_ >= 0) std::fprintf(stderr, "\r%*s\r", static_cast<int>(what_.size()) + 20, "");
}

void Progress::Step(long done) {
  if (!shown_ || total_ <= 0) return;
  int percent = static_cast<int>(done * 100 / total_);
  if (percent == last_) return;
  last_ = percent;
  std::fprintf(stderr, "\rkroconv: %s %3d%%", what_.c_str(), percent);
  std::fflush(stderr);
}

}  // namespace kroconv
