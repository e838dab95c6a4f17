// Plane and row copies and fills, cache-size queries, and the rounding-mode guard.
#include "frame/copy_fill.h"

#include <cstring>

#include "frame/simd.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#define KRO_HAVE_CPUID 1
#else
#define KRO_HAVE_CPUID 0
#endif

#if !KRO_SIMD
#include <cfenv>
#endif

namespace kro {

// ---- Cache-size queries ---------------------------------------------------------------------

namespace {

#if KRO_HAVE_CPUID
// Largest cache of the deterministic cache parameter leaves (leaf 4 on one vendor,
// 0x8000001D on the other): ways x partitions x line size x sets of each cache level, as the
// leaf reports each field minus one. Returns 0 if the leaf describes no cache.
uint64_t LargestCacheOfLeaf(unsigned leaf) {
  uint64_t largest = 0;
  for (unsigned index = 0; index < 16; ++index) {
    unsigned eax, ebx, ecx, edx;
    __cpuid_count(leaf, index, eax, ebx, ecx, edx);
    if ((eax & 0x1F) == 0) break;  // no more caches
    const uint64_t ways = ((ebx >> 22) & 0x3FF) + 1;
    const uint64_t partitions = ((ebx >> 12) & 0x3FF) + 1;
    const uint64_t line = (ebx & 0xFFF) + 1;
    const uint64_t sets = uint64_t{ecx} + 1;
    const uint64_t size = ways * partitions * line * sets;
    if (size > largest) largest = size;
  }
  return largest;
}
#endif

// The descriptor bytes of leaf 2 that name a cache of 512 KiB or more, largest first; the
// second byte codes the size as (code >> 4) << ((code & 15) + 18).
struct Descriptor {
  uint8_t byte, sizeCode;
};
constexpr Descriptor kDescriptors[] = {
    {0xEC, 0xC3}, {0xEB, 0x93}, {0x4D, 0x16}, {0xEA, 0x34}, {0x4C, 0x34}, {0xE4, 0x15},
    {0xDE, 0x15}, {0x4B, 0x15}, {0x47, 0x15}, {0x4E, 0x33}, {0x4A, 0x33}, {0xE3, 0x14},
    {0xDD, 0x14}, {0xD8, 0x14}, {0x49, 0x14}, {0x29, 0x14}, {0x46, 0x14}, {0x48, 0x32},
    {0xE2, 0x13}, {0xDC, 0x13}, {0xD7, 0x13}, {0xD2, 0x13}, {0x25, 0x13}, {0x7D, 0x13},
    {0x85, 0x13}, {0x45, 0x13}, {0xD6, 0x12}, {0xD1, 0x12}, {0x23, 0x12}, {0x87, 0x12},
    {0x7C, 0x12}, {0x78, 0x12}, {0x84, 0x12}, {0x44, 0x12}, {0xD0, 0x11}, {0x22, 0x11},
    {0x7B, 0x11}, {0x80, 0x11}, {0x86, 0x11}, {0x3E, 0x11}, {0x7F, 0x11}, {0x83, 0x11},
    {0x43, 0x11},
};

constexpr uint32_t DescriptorSize(uint8_t code) {
  return static_cast<uint32_t>(code >> 4) << ((code & 15) + 18);
}
static_assert(DescriptorSize(0xC3) == 24u << 20, "largest entry names 24 MiB");
static_assert(DescriptorSize(0x11) == 512u << 10, "smallest entry names 512 KiB");

}  // namespace

int kroGetMaxCacheSizeB(int32_t* size) {
#if KRO_HAVE_CPUID
  unsigned eax, ebx, ecx, edx;
  uint64_t largest = 0;
  if (__get_cpuid(0, &eax, &ebx, &ecx, &edx) && eax >= 4) largest = LargestCacheOfLeaf(4);
  if (largest == 0 && __get_cpuid(0x80000000u, &eax, &ebx, &ecx, &edx) && eax >= 0x8000001Du) {
    largest = LargestCacheOfLeaf(0x8000001Du);
  }
  if (largest == 0 || largest > 0x7FFFFFFF) return -1;
  *size = static_cast<int32_t>(largest);
  return 0;
#else
  (void)size;
  return -1;
#endif
}

uint32_t CacheSizeFromDescriptors(const Leaf2Answer& answer) {
  if (std::memcmp(answer.vendor, kDescriptorVendor, sizeof kDescriptorVendor) != 0) return 0;
  if ((answer.eax & 0xFF) != 1) return 0;  // more than one round of leaf 2
  // Fifteen descriptor bytes: EAX's upper three (its low byte is the round count), then all of
  // EBX, ECX, EDX. A register with its top bit set holds no descriptors.
  uint8_t bytes[16] = {};
  const uint32_t regs[4] = {answer.eax & 0xFFFFFF00u, answer.ebx, answer.ecx, answer.edx};
  for (int r = 0; r < 4; ++r) {
    if (regs[r] & 0x80000000u) continue;
    for (int b = 0; b < 4; ++b) bytes[4 * r + b] = static_cast<uint8_t>(regs[r] >> (8 * b));
  }
  for (const Descriptor& d : kDescriptors) {
    for (uint8_t b : bytes) {
      if (b == d.byte) return DescriptorSize(d.sizeCode);
    }
  }
  return 0;
}

bool ReadLeaf2(Leaf2Answer* answer) {
#if KRO_HAVE_CPUID
  unsigned eax, ebx, ecx, edx;
  if (!__get_cpuid(0, &eax, &ebx, &ecx, &edx)) return false;
  std::memcpy(answer->vendor + 0, &ebx, 4);
  std::memcpy(answer->vendor + 4, &edx, 4);
  std::memcpy(answer->vendor + 8, &ecx, 4);
  if (eax < 2) return false;
  __cpuid(2, answer->eax, answer->ebx, answer->ecx, answer->edx);
  return true;
#else
  (void)answer;
  return false;
#endif
}

uint32_t ProcessorDescriptorCacheSize() {
  Leaf2Answer answer;
  return ReadLeaf2(&answer) ? CacheSizeFromDescriptors(answer) : 0;
}

// ---- Rows -----------------------------------------------------------------------------------

namespace {

// Bytes from p up to the next 16-byte boundary (0 if aligned).
inline std::size_t ToAlign16(const void* p) {
  return (16 - (reinterpret_cast<std::uintptr_t>(p) & 15)) & 15;
}

// The last bytes of CopyRow: 8, 4, 2, then 1 at a time.
inline void CopyLastBytes(const uint8_t* src, uint8_t* dst, std::size_t bytes) {
  for (; bytes >= 8; bytes -= 8, src += 8, dst += 8) std::memcpy(dst, src, 8);
  if (bytes >= 4) std::memcpy(dst, src, 4), bytes -= 4, src += 4, dst += 4;
  if (bytes >= 2) std::memcpy(dst, src, 2), bytes -= 2, src += 2, dst += 2;
  if (bytes) *dst = *src;
}

}  // namespace

void CopyRow(const uint8_t* src, uint8_t* dst, std::size_t bytes, bool streaming) {
#if KRO_SIMD
  if (bytes >= 64) {
    // One unaligned piece brings the destination to a 16-byte boundary; the bytes it writes
    // past that boundary are written again, with the same values, by the first round.
    const std::size_t lead = ToAlign16(dst);
    if (lead) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)));
      src += lead, dst += lead, bytes -= lead;
    }
    const bool stream = streaming && CopyRowMayStream(reinterpret_cast<std::uintptr_t>(src),
                                                      reinterpret_cast<std::uintptr_t>(dst));
    for (; bytes >= 64; bytes -= 64, src += 64, dst += 64) {
      const __m128i* s = reinterpret_cast<const __m128i*>(src);
      __m128i* d = reinterpret_cast<__m128i*>(dst);
      const __m128i a = _mm_loadu_si128(s), b = _mm_loadu_si128(s + 1);
      const __m128i c = _mm_loadu_si128(s + 2), e = _mm_loadu_si128(s + 3);
      if (stream) {
        _mm_stream_si128(d, a), _mm_stream_si128(d + 1, b);
        _mm_stream_si128(d + 2, c), _mm_stream_si128(d + 3, e);
      } else {
        _mm_store_si128(d, a), _mm_store_si128(d + 1, b);
        _mm_store_si128(d + 2, c), _mm_store_si128(d + 3, e);
      }
    }
    if (stream) _mm_sfence();
  }
#else
  (void)streaming;
#endif
  CopyLastBytes(src, dst, bytes);
}

void FillRow(const uint8_t pattern[16], uint8_t* dst, std::size_t bytes, bool streaming) {
#if KRO_SIMD
  if (bytes >= 64) {
    const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pattern));
    const std::size_t lead = ToAlign16(dst);
    if (lead) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), p);
      dst += lead, bytes -= lead;
    }
    for (; bytes >= 64; bytes -= 64, dst += 64) {
      __m128i* d = reinterpret_cast<__m128i*>(dst);
      if (streaming) {
        _mm_stream_si128(d, p), _mm_stream_si128(d + 1, p);
        _mm_stream_si128(d + 2, p), _mm_stream_si128(d + 3, p);
      } else {
        _mm_store_si128(d, p), _mm_store_si128(d + 1, p);
        _mm_store_si128(d + 2, p), _mm_store_si128(d + 3, p);
      }
    }
    if (streaming) _mm_sfence();
    for (; bytes >= 16; bytes -= 16, dst += 16) _mm_store_si128(reinterpret_cast<__m128i*>(dst), p);
  }
#else
  (void)streaming;
#endif
  // The last bytes: a plain byte fill.
  for (std::size_t i = 0; i < bytes; ++i) dst[i] = pattern[i & 15];
}

// ---- Planes ---------------------------------------------------------------------------------

CopyPlanePlan PlanCopyPlane(int srcStep, int dstStep, int widthBytes, int height,
                            DescriptorCacheFn cacheSize) {
  const int64_t total = int64_t{widthBytes} * height;
  // A plane too large for a 32-bit byte count streams at once, row by row.
  if (total > INT32_MAX) return {false, true};
  const bool collapsed = srcStep == dstStep && dstStep == widthBytes;
  const int64_t rowBytes = collapsed ? total : widthBytes;
  if (rowBytes < 64 || total <= 0x20000) return {collapsed, false};
  const uint32_t cache = cacheSize();
  if (cache == 0) return {collapsed, false};
  return {collapsed, total > int64_t{cache / 2}};
}

namespace {

// Streaming copy of one row: destination aligned to 64 bytes byte by byte, 64-byte rounds from
// unaligned loads with non-temporal stores, last bytes one by one. The caller fences.
void StreamRow(const uint8_t* src, uint8_t* dst, std::size_t bytes) {
#if KRO_SIMD
  std::size_t lead = (64 - (reinterpret_cast<std::uintptr_t>(dst) & 63)) & 63;
  if (lead > bytes) lead = bytes;
  for (; lead; --lead, --bytes) *dst++ = *src++;
  for (; bytes >= 64; bytes -= 64, src += 64, dst += 64) {
    const __m128i* s = reinterpret_cast<const __m128i*>(src);
    __m128i* d = reinterpret_cast<__m128i*>(dst);
    const __m128i a = _mm_loadu_si128(s), b = _mm_loadu_si128(s + 1);
    const __m128i c = _mm_loadu_si128(s + 2), e = _mm_loadu_si128(s + 3);
    _mm_stream_si128(d, a), _mm_stream_si128(d + 1, b);
    _mm_stream_si128(d + 2, c), _mm_stream_si128(d + 3, e);
  }
#endif
  for (; bytes; --bytes) *dst++ = *src++;
}

// Plain copy of one row: destination aligned to 16 bytes by 1, 2, 4 and 8-byte moves, 128-byte
// rounds (aligned loads when the source is aligned too), then 64, 32, 16, 8, 4 and single bytes.
void PlainRow(const uint8_t* src, uint8_t* dst, std::size_t bytes) {
#if KRO_SIMD
  // While 16 bytes or more remain, every step runs, so any vector move below finds the
  // destination aligned.
  for (std::size_t piece = 1; piece <= 8 && bytes >= 16; piece *= 2) {
    if (reinterpret_cast<std::uintptr_t>(dst) & piece) {
      std::memcpy(dst, src, piece);
      src += piece, dst += piece, bytes -= piece;
    }
  }
  const bool alignedLoads = (reinterpret_cast<std::uintptr_t>(src) & 15) == 0;
  auto move = [&](std::size_t vectors) {
    const __m128i* s = reinterpret_cast<const __m128i*>(src);
    __m128i* d = reinterpret_cast<__m128i*>(dst);
    for (std::size_t v = 0; v < vectors; ++v) {
      _mm_store_si128(d + v, alignedLoads ? _mm_load_si128(s + v) : _mm_loadu_si128(s + v));
    }
    src += 16 * vectors, dst += 16 * vectors, bytes -= 16 * vectors;
  };
  while (bytes >= 128) move(8);
  if (bytes >= 64) move(4);
  if (bytes >= 32) move(2);
  if (bytes >= 16) move(1);
#endif
  // The last bytes: 8 and 4 at a time, then single bytes (no 2-byte move here, unlike CopyRow).
  for (; bytes >= 8; bytes -= 8, src += 8, dst += 8) std::memcpy(dst, src, 8);
  if (bytes >= 4) std::memcpy(dst, src, 4), bytes -= 4, src += 4, dst += 4;
  for (; bytes; --bytes) *dst++ = *src++;
}

}  // namespace

void CopyPlane(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, int widthBytes,
               int height, DescriptorCacheFn cacheSize) {
  const CopyPlanePlan plan = PlanCopyPlane(srcStep, dstStep, widthBytes, height, cacheSize);
  const int rows = plan.collapsed ? 1 : height;
  const std::size_t rowBytes = plan.collapsed
                                   ? static_cast<std::size_t>(widthBytes) * height
                                   : static_cast<std::size_t>(widthBytes);
  for (int y = 0; y < rows; ++y) {
    const uint8_t* s = src + static_cast<std::ptrdiff_t>(y) * srcStep;
    uint8_t* d = dst + static_cast<std::ptrdiff_t>(y) * dstStep;
    if (plan.streaming) {
      StreamRow(s, d, rowBytes);
    } else {
      PlainRow(s, d, rowBytes);
    }
  }
#if KRO_SIMD
  if (plan.streaming) _mm_sfence();
#endif
}

bool FillPlaneStreams(std::size_t total, CacheQueryFn query) {
  if (total <= 0x80000) return false;
  // Any size the query reports counts, a zero one included: only a failed query keeps the
  // plain stores.
  int32_t cache = 0;
  return query(&cache) == 0 && static_cast<int64_t>(total) >= int64_t{cache};
}

kroStatus FillPlane(uint8_t value, uint8_t* dst, int step, int widthBytes, int height,
                    CacheQueryFn query) {
  if (dst == nullptr) return kroStatusNullPointer;
  if (widthBytes < 1 || height < 1) return kroStatusBadSize;
  const std::size_t total = static_cast<std::size_t>(widthBytes) * height;
  const bool collapsed = step == widthBytes;
  const bool streaming = FillPlaneStreams(total, query);
  uint8_t pattern[16];
  std::memset(pattern, value, sizeof pattern);
  if (collapsed) {
    FillRow(pattern, dst, total, streaming);
  } else {
    for (int y = 0; y < height; ++y) {
      FillRow(pattern, dst + static_cast<std::ptrdiff_t>(y) * step,
              static_cast<std::size_t>(widthBytes), streaming);
    }
  }
  return kroStatusOk;
}

// ---- SSE control word -----------------------------------------------------------------------

namespace {
constexpr unsigned kRoundingField = 0x6000;  // MXCSR bits 13 and 14; 0 is round to nearest
}

#if KRO_SIMD
RoundToNearestScope::RoundToNearestScope() : saved_(_mm_getcsr()) {
  changed_ = (saved_ & kRoundingField) != 0;
  if (changed_) _mm_setcsr(saved_ & ~kRoundingField);
}
RoundToNearestScope::~RoundToNearestScope() {
  if (changed_) _mm_setcsr(saved_);
}
#else
// The portable build has no control word of its own: it goes through the C runtime's rounding
// mode, which the scalar conversions follow.
RoundToNearestScope::RoundToNearestScope()
    : saved_(static_cast<unsigned>(std::fegetround())) {
  changed_ = static_cast<int>(saved_) != FE_TONEAREST;
  if (changed_) std::fesetround(FE_TONEAREST);
}
RoundToNearestScope::~RoundToNearestScope() {
  if (changed_) std::fesetround(static_cast<int>(saved_));
}
#endif

}  // namespace kro
