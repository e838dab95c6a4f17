// Plane and row copies and fills shared by the kernels, the processor's cache-size queries they
// rely on, and the guard that pins the SSE rounding mode for the kernels defined to round to
// nearest.
//
// None of these changes a byte's value by the path it takes: streaming (non-temporal) stores
// and plain stores write the same bytes. The paths differ in how the bytes travel, and the rules
// that pick them are kept exactly because they are part of how each caller behaves under load.
#pragma once

#include <cstddef>
#include <cstdint>

#include "krocc.h"

namespace kro {

// ---- Cache-size queries ---------------------------------------------------------------------

// Size in bytes of the largest cache the processor reports through its deterministic cache
// parameters. Returns 0 and stores the size on success; any other value means no answer (and
// leaves *size alone). Internal to the library; asked afresh by each call that needs it.
int kroGetMaxCacheSizeB(int32_t* size);

// A cache query with the same contract, so tests can stand in for the processor.
using CacheQueryFn = int (*)(int32_t* size);

// The vendor string whose leaf-2 descriptor scheme CacheSizeFromDescriptors decodes, in the byte
// order leaf 0 returns it (EBX, EDX, ECX).
constexpr char kDescriptorVendor[12] = {0x47, 0x65, 0x6E, 0x75, 0x69, 0x6E,
                                        0x65, 0x49, 0x6E, 0x74, 0x65, 0x6C};

// The registers of a processor's leaf-2 answer and the vendor string (12 bytes, as leaf 0
// returns it in EBX, EDX, ECX order).
struct Leaf2Answer {
  char vendor[12];
  uint32_t eax, ebx, ecx, edx;
};

// Cache size named by leaf-2 descriptor bytes: the first entry of the library's descriptor
// table (largest first) that stands among the descriptor bytes. 0 when the vendor is not the one
// the descriptors belong to, when leaf 2 needs more than one round, or when no byte matches.
uint32_t CacheSizeFromDescriptors(const Leaf2Answer& answer);

// Asks the processor for its leaf-2 answer; false where there is no such query.
bool ReadLeaf2(Leaf2Answer* answer);

// CacheSizeFromDescriptors of the running processor (0: unknown).
uint32_t ProcessorDescriptorCacheSize();
using DescriptorCacheFn = uint32_t (*)();

// ---- Rows -----------------------------------------------------------------------------------

// Whether CopyRow may stream for this pair of addresses: not when the source lies just behind
// the destination modulo 64 KiB (the low 16 bits of source minus destination in 65216..65520).
constexpr bool CopyRowMayStream(std::uintptr_t src, std::uintptr_t dst) {
  const unsigned d = static_cast<unsigned>((src - dst) & 0xFFFFu);
  return d < 65216u || d > 65520u;
}

// Copies `bytes` bytes; with `streaming` set, rows of 64 bytes or more go out with
// non-temporal stores (unless CopyRowMayStream says no) and a store fence.
void CopyRow(const uint8_t* src, uint8_t* dst, std::size_t bytes, bool streaming);

// Writes the 16-byte pattern along `bytes` bytes of one row. The pattern is stored at the row's
// first address and then at 16-byte aligned addresses, so it is meant to be one byte value
// repeated sixteen times.
void FillRow(const uint8_t pattern[16], uint8_t* dst, std::size_t bytes, bool streaming);

// ---- Planes ---------------------------------------------------------------------------------

// How CopyPlane moves a plane; exposed so the choice can be tested without gigabytes.
struct CopyPlanePlan {
  bool collapsed;  // one row of width * height bytes
  bool streaming;  // non-temporal stores and a store fence
};
CopyPlanePlan PlanCopyPlane(int srcStep, int dstStep, int widthBytes, int height,
                            DescriptorCacheFn cacheSize = ProcessorDescriptorCacheSize);

// Copies a plane of widthBytes x height bytes (both at least 1).
void CopyPlane(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, int widthBytes,
               int height, DescriptorCacheFn cacheSize = ProcessorDescriptorCacheSize);

// Whether FillPlane streams a fill of `total` bytes: only above 512 KiB, and only when the
// query answers and total reaches the size it reports.
bool FillPlaneStreams(std::size_t total, CacheQueryFn query = kroGetMaxCacheSizeB);

// Fills a plane with one byte value. kroStatusNullPointer for a null destination,
// kroStatusBadSize for a width or height below 1.
kroStatus FillPlane(uint8_t value, uint8_t* dst, int step, int widthBytes, int height,
                    CacheQueryFn query = kroGetMaxCacheSizeB);

// ---- SSE control word -----------------------------------------------------------------------

// Runs a scope in round-to-nearest: reads the control word and, if its rounding field (bits 13
// and 14) is not nearest, sets it to nearest; on leaving, writes the saved word back only in
// that case. Under round-to-nearest the control word is never written.
class RoundToNearestScope {
 public:
  RoundToNearestScope();
  ~RoundToNearestScope();
  RoundToNearestScope(const RoundToNearestScope&) = delete;
  RoundToNearestScope& operator=(const RoundToNearestScope&) = delete;

 private:
  unsigned saved_;
  bool changed_;
};

}  // namespace kro
