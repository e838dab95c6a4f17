// Shared harness of the full-resolution matrix families: images in every layout with canary
// margins, a table row per export (layouts, block size, formulas, alpha rule, check order), and
// the tests every export of such a family must pass, parameterised over the table.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "color/matrix_rows.h"
#include "support.h"

namespace kro::test {

using color::Px;

// An image in one of the family's layouts: packed with 3 or 4 bytes per pixel, or 3 or 4 planes
// sharing one step. Every plane has canary margins.
struct Image {
  bool planar;
  int channels, width, height;
  std::vector<std::unique_ptr<Plane>> planes;
  const uint8_t* cptrs[4] = {};
  uint8_t* ptrs[4] = {};

  // Plane p starts `offset + spread * p` bytes past a 64-byte boundary (spread 0: all planes
  // equally placed).
  Image(bool isPlanar, int ch, int w, int h, int pad = 0, int offset = 0, int spread = 5)
      : planar(isPlanar), channels(ch), width(w), height(h) {
    const int rowBytes = planar ? w : w * ch;
    for (int p = 0; p < (planar ? ch : 1); ++p) {
      planes.push_back(std::make_unique<Plane>(rowBytes, h, rowBytes + pad, offset + spread * p));
      ptrs[p] = planes.back()->data();
      cptrs[p] = ptrs[p];
    }
  }
  bool forceStep = false;  // pass forcedStep instead of the planes' own step
  int forcedStep = 0;
  int step() const { return forceStep ? forcedStep : planes[0]->step(); }
  // Points every plane at its last row and walks upward with the negated step.
  void StartAtLastRow() {
    for (std::size_t p = 0; p < planes.size(); ++p) ptrs[p] = planes[p]->row(height - 1);
    for (std::size_t p = 0; p < planes.size(); ++p) cptrs[p] = ptrs[p];
    forceStep = true;
    forcedStep = -planes[0]->step();
  }
  uint8_t& at(int x, int y, int c) {
    return planar ? planes[c]->row(y)[x] : planes[0]->row(y)[x * channels + c];
  }
  void Random(std::mt19937& rng) {
    for (auto& p : planes) p->FillRandom(rng);
  }
  void Snapshot() {
    for (auto& p : planes) p->Snapshot();
  }
  bool Unchanged() const {
    for (auto& p : planes)
      if (!p->Unchanged()) return false;
    return true;
  }
  bool CanariesIntact() const {
    for (auto& p : planes)
      if (!p->CanariesIntact()) return false;
    return true;
  }
};

// How an export treats the destination's fourth component.
enum class Alpha { kNone, kUntouched, kFromSource, kFixed };
constexpr uint8_t kAlphaValue = 0x77;

using Call = std::function<kroStatus(Image& src, Image& dst, KroSize roi)>;

struct Export {
  std::string name;
  bool srcPlanar;
  int srcChannels;
  bool dstPlanar;
  int dstChannels;
  int block;  // 0: every pixel takes the tail formula
  color::PixelFn blockFn, tailFn;
  Alpha alpha;
  Call call;
  bool dstBackwards = false;      // BGR destination: the formula's R lands in byte 2
  bool planesBeforeSize = false;  // plane pointers tested before the size
};

#define PACKED_TO_PACKED(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs[0], s.step(), d.ptrs[0], d.step(), r); }
#define PACKED_TO_PLANES(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs[0], s.step(), d.ptrs, d.step(), r); }
#define PLANES_TO_PLANES(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs, s.step(), d.ptrs, d.step(), r); }
#define PLANES_TO_PACKED(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs, s.step(), d.ptrs[0], d.step(), r); }

inline void PrintTo(const Export& e, std::ostream* os) { *os << e.name; }

class MatrixFamily : public testing::TestWithParam<Export> {};

// Runs the export on src into a fresh destination and checks every pixel against the formula
// its position calls for, the alpha rule, and the canaries.
inline void ExpectFormulas(const Export& e, Image& src, int pad, int offset, int spread = 5) {
  Image dst(e.dstPlanar, e.dstChannels, src.width, src.height, pad, offset, spread);
  ASSERT_EQ(e.call(src, dst, {src.width, src.height}), kroStatusOk);
  const int body = e.block ? (src.width & ~(e.block - 1)) : 0;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      const Px want =
          (x < body ? e.blockFn : e.tailFn)(src.at(x, y, 0), src.at(x, y, 1), src.at(x, y, 2));
      const int first = e.dstBackwards ? 2 : 0, last = 2 - first;
      const Px got = {dst.at(x, y, first), dst.at(x, y, 1), dst.at(x, y, last)};
      ASSERT_TRUE(want.c0 == got.c0 && want.c1 == got.c1 && want.c2 == got.c2)
          << "pixel " << x << "," << y << " of width " << src.width << ": got " << int(got.c0)
          << " " << int(got.c1) << " " << int(got.c2) << ", want " << int(want.c0) << " "
          << int(want.c1) << " " << int(want.c2);
      const int alpha = e.alpha == Alpha::kUntouched    ? kCanary
                        : e.alpha == Alpha::kFromSource ? src.at(x, y, 3)
                        : e.alpha == Alpha::kFixed      ? kAlphaValue
                                                        : -1;
      if (alpha >= 0) {
        ASSERT_EQ(dst.at(x, y, 3), alpha) << "alpha of pixel " << x;
      }
    }
  }
  ASSERT_TRUE(dst.CanariesIntact()) << "width " << src.width;
}

// Random data at every width 1..130 (each block and tail boundary), odd padded steps and
// unaligned starts: block pixels follow the block formula, the rest the tail formula.
TEST_P(MatrixFamily, EveryPixelFollowsItsPositionsFormula) {
  const Export& e = GetParam();
  std::mt19937 rng(42);
  for (int width : test::AllWidths()) {
    for (auto [height, pad, offset] : {std::tuple{1, 0, 0}, {3, 7, 1}, {2, 64, 13}}) {
      Image src(e.srcPlanar, e.srcChannels, width, height, pad, offset);
      src.Random(rng);
      ExpectFormulas(e, src, pad + 3, offset + 2);
      if (HasFatalFailure()) return;
    }
  }
}

// A step of 0 names the same row for every row of the image: height 4 gives the one-row result.
TEST_P(MatrixFamily, StepZeroRepeatsOneRow) {
  const Export& e = GetParam();
  std::mt19937 rng(3);
  Image src(e.srcPlanar, e.srcChannels, 37, 1), ref(e.dstPlanar, e.dstChannels, 37, 1);
  src.Random(rng);
  ASSERT_EQ(e.call(src, ref, {37, 1}), kroStatusOk);
  Image dst(e.dstPlanar, e.dstChannels, 37, 1);
  src.forceStep = dst.forceStep = true;
  src.forcedStep = dst.forcedStep = 0;
  ASSERT_EQ(e.call(src, dst, {37, 4}), kroStatusOk);
  for (int p = 0; p < (e.dstPlanar ? e.dstChannels : 1); ++p) {
    EXPECT_EQ(dst.planes[p]->Region(), ref.planes[p]->Region());
  }
  EXPECT_TRUE(dst.CanariesIntact());
}

// Buffers that end exactly at an inaccessible page (or start right after one): no byte past the
// last pixel, or before the first, is touched.
TEST_P(MatrixFamily, StaysInsideBuffersThatEndAtAPage) {
  const Export& e = GetParam();
  for (bool guardStart : {false, true}) {
    for (int width : {1, 7, 8, 9, 15, 16, 17, 24, 25, 33}) {
      const int srcBytes = e.srcPlanar ? width : width * e.srcChannels;
      const int dstBytes = e.dstPlanar ? width : width * e.dstChannels;
      std::vector<std::unique_ptr<GuardedBuffer>> bufs;
      Image src(e.srcPlanar, e.srcChannels, width, 1), dst(e.dstPlanar, e.dstChannels, width, 1);
      for (int p = 0; p < (e.srcPlanar ? e.srcChannels : 1); ++p) {
        bufs.push_back(std::make_unique<GuardedBuffer>(srcBytes, guardStart));
        std::memset(bufs.back()->data(), 0x80 + p, srcBytes);
        src.cptrs[p] = bufs.back()->data();
      }
      for (int p = 0; p < (e.dstPlanar ? e.dstChannels : 1); ++p) {
        bufs.push_back(std::make_unique<GuardedBuffer>(dstBytes, guardStart));
        dst.ptrs[p] = bufs.back()->data();
      }
      EXPECT_EQ(e.call(src, dst, {width, 1}), kroStatusOk) << width;
    }
  }
}

// Every plane 16-byte aligned with steps of whole vectors, the layout that lets a kernel take
// aligned loads and stores: the pixels still follow the formula their position calls for (an
// aligned path may use larger blocks, never other formulas).
TEST_P(MatrixFamily, AlignedPlanesFollowTheSameFormulas) {
  const Export& e = GetParam();
  std::mt19937 rng(8);
  for (int width : {8, 13, 16, 24, 29, 32, 48, 64, 72}) {
    const int srcRow = e.srcPlanar ? width : width * e.srcChannels;
    const int dstRow = e.dstPlanar ? width : width * e.dstChannels;
    Image src(e.srcPlanar, e.srcChannels, width, 3, (16 - srcRow % 16) % 16 + 32, 0, 0);
    src.Random(rng);
    ExpectFormulas(e, src, (16 - dstRow % 16) % 16 + 16, 0, 0);
    if (HasFatalFailure()) return;
  }
}

// Every colour through the block formula where the export has blocks (through its only formula
// where it has none): 256 x 256 images whose width is a whole number of blocks, one for each
// value of the third component (every third value under the sanitizers, which are slow).
TEST_P(MatrixFamily, EveryColourFollowsItsFormula) {
  const Export& e = GetParam();
#if !KRO_SIMD
  GTEST_SKIP() << "the portable build runs the scalar twins themselves";
#endif
#if defined(__SANITIZE_ADDRESS__)
  constexpr int kThirdStep = 3;
#else
  constexpr int kThirdStep = 1;
#endif
  Image src(e.srcPlanar, e.srcChannels, 256, 256, 16, 0, 0);
  Image dst(e.dstPlanar, e.dstChannels, 256, 256, 16, 0, 0);
  const color::PixelFn f = e.block ? e.blockFn : e.tailFn;
  const int first = e.dstBackwards ? 2 : 0, last = 2 - first;
  for (int c = 0; c < 256; c += (c == 255 - (255 % kThirdStep) ? 1 : kThirdStep)) {
    for (int y = 0; y < 256; ++y) {
      for (int x = 0; x < 256; ++x) {
        src.at(x, y, 0) = static_cast<uint8_t>(x);
        src.at(x, y, 1) = static_cast<uint8_t>(y);
        src.at(x, y, 2) = static_cast<uint8_t>(c);
      }
    }
    ASSERT_EQ(e.call(src, dst, {256, 256}), kroStatusOk);
    for (int y = 0; y < 256; ++y) {
      for (int x = 0; x < 256; ++x) {
        const Px want = f(x, y, c);
        if (want.c0 != dst.at(x, y, first) || want.c1 != dst.at(x, y, 1) ||
            want.c2 != dst.at(x, y, last)) {
          FAIL() << "colour " << x << "," << y << "," << c << ": got " << int(dst.at(x, y, first))
                 << " " << int(dst.at(x, y, 1)) << " " << int(dst.at(x, y, last)) << ", want "
                 << int(want.c0) << " " << int(want.c1) << " " << int(want.c2);
        }
      }
    }
  }
}

// A negative step walks the image upward: the destination read from its last row with the
// negated step holds the rows of the plain call in reverse order, and nothing outside them
// changes.
TEST_P(MatrixFamily, NegativeStepWalksUpward) {
  const Export& e = GetParam();
  std::mt19937 rng(4);
  const int width = 29, height = 3;
  Image src(e.srcPlanar, e.srcChannels, width, height, 5, 1);
  src.Random(rng);
  Image ref(e.dstPlanar, e.dstChannels, width, height, 3, 2);
  ASSERT_EQ(e.call(src, ref, {width, height}), kroStatusOk);
  Image dst(e.dstPlanar, e.dstChannels, width, height, 3, 2);
  dst.StartAtLastRow();
  ASSERT_EQ(e.call(src, dst, {width, height}), kroStatusOk);
  for (std::size_t p = 0; p < dst.planes.size(); ++p) {
    const int bytes = dst.planes[p]->rowBytes();
    for (int y = 0; y < height; ++y) {
      EXPECT_EQ(0, std::memcmp(dst.planes[p]->row(height - 1 - y), ref.planes[p]->row(y), bytes))
          << "plane " << p << " row " << y;
    }
  }
  EXPECT_TRUE(dst.CanariesIntact());
  // The source walked upward too gives the plain result back in order.
  Image again(e.dstPlanar, e.dstChannels, width, height, 3, 2);
  again.StartAtLastRow();
  src.StartAtLastRow();
  ASSERT_EQ(e.call(src, again, {width, height}), kroStatusOk);
  for (std::size_t p = 0; p < again.planes.size(); ++p) {
    EXPECT_EQ(again.planes[p]->Region(), ref.planes[p]->Region()) << "plane " << p;
  }
}

// Statuses in each export's order: pointers first, then the size, then plane pointers; nothing
// is written on any error.
TEST_P(MatrixFamily, ChecksInOrderAndWritesNothingOnError) {
  const Export& e = GetParam();
  Image src(e.srcPlanar, e.srcChannels, 8, 2), dst(e.dstPlanar, e.dstChannels, 8, 2);
  dst.Snapshot();
  auto expect = [&](kroStatus want, KroSize roi, const char* what) {
    EXPECT_EQ(e.call(src, dst, roi), want) << what;
    EXPECT_TRUE(dst.Unchanged()) << what;
  };
  expect(kroStatusBadSize, {0, 2}, "width 0");
  expect(kroStatusBadSize, {8, -1}, "height -1");
  // A null image (packed) before the size.
  if (!e.srcPlanar) {
    const uint8_t* keep = src.cptrs[0];
    src.cptrs[0] = nullptr;
    expect(kroStatusNullPointer, {0, 0}, "null source and bad size");
    src.cptrs[0] = keep;
  }
  if (!e.dstPlanar) {
    uint8_t* keep = dst.ptrs[0];
    dst.ptrs[0] = nullptr;
    expect(kroStatusNullPointer, {0, 0}, "null destination and bad size");
    dst.ptrs[0] = keep;
  }
  // Plane pointers after the size, or before it where the export says so (a fourth
  // destination plane not at all).
  for (int p = 0; p < 3; ++p) {
    if (e.srcPlanar) {
      const uint8_t* keep = src.cptrs[p];
      src.cptrs[p] = nullptr;
      expect(e.planesBeforeSize ? kroStatusNullPointer : kroStatusBadSize, {8, 0},
             "null source plane and bad size");
      expect(kroStatusNullPointer, {8, 2}, "null source plane");
      src.cptrs[p] = keep;
    }
    if (e.dstPlanar) {
      uint8_t* keep = dst.ptrs[p];
      dst.ptrs[p] = nullptr;
      expect(e.planesBeforeSize ? kroStatusNullPointer : kroStatusBadSize, {-8, 2},
             "null destination plane and bad size");
      expect(kroStatusNullPointer, {8, 2}, "null destination plane");
      dst.ptrs[p] = keep;
    }
  }
}

// FNV-1a over every destination plane's region after one call on a seeded 53 x 3 image with
// padded steps. The default and the portable build must both reproduce the recorded values,
// which ties the vector bodies and the scalar twins to one set of bytes.
inline uint32_t OutputHash(const Export& e) {
  std::mt19937 rng(2024);
  Image src(e.srcPlanar, e.srcChannels, 53, 3, 7, 3);
  src.Random(rng);
  Image dst(e.dstPlanar, e.dstChannels, 53, 3, 5, 1);
  if (e.call(src, dst, {53, 3}) != kroStatusOk) return 0;
  uint32_t h = 2166136261u;
  for (const auto& plane : dst.planes) {
    for (uint8_t b : plane->Region()) h = (h ^ b) * 16777619u;
  }
  return h;
}

// Compares OutputHash of each named export with its recorded value.
using Recorded = std::pair<const char*, uint32_t>;
inline void ExpectRecordedOutputs(const std::vector<Export>& all,
                                  const std::vector<Recorded>& recorded) {
  for (const Recorded& r : recorded) {
    const auto e =
        std::find_if(all.begin(), all.end(), [&](const Export& x) { return x.name == r.first; });
    ASSERT_NE(e, all.end()) << r.first;
    EXPECT_EQ(OutputHash(*e), r.second) << r.first;
  }
  EXPECT_EQ(recorded.size(), all.size()) << "an export without a recorded value";
}

// A row of `width` copies of one colour through an export; returns the destination image.
inline Image RunSolid(const Export& e, int width, int a, int b, int c) {
  Image src(e.srcPlanar, e.srcChannels, width, 1);
  for (int x = 0; x < width; ++x) {
    src.at(x, 0, 0) = static_cast<uint8_t>(a);
    src.at(x, 0, 1) = static_cast<uint8_t>(b);
    src.at(x, 0, 2) = static_cast<uint8_t>(c);
    if (e.srcChannels == 4) src.at(x, 0, 3) = 0xEE;
  }
  Image dst(e.dstPlanar, e.dstChannels, width, 1);
  EXPECT_EQ(e.call(src, dst, {width, 1}), kroStatusOk);
  return dst;
}

inline const Export& Find(const std::vector<Export>& all, const char* name) {
  for (const Export& e : all)
    if (e.name == name) return e;
  throw std::runtime_error(name);
}

inline void ExpectPixel(Image& img, int x, int a, int b, int c, const char* what) {
  EXPECT_EQ(img.at(x, 0, 0), a) << what << " pixel " << x;
  EXPECT_EQ(img.at(x, 0, 1), b) << what << " pixel " << x;
  EXPECT_EQ(img.at(x, 0, 2), c) << what << " pixel " << x;
}

}  // namespace kro::test
