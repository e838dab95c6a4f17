// The version record.
#include "frame/entry.h"

namespace kro::wrap {
namespace {

// Two letters for the processor class a build is made for: "SS" for the SSE2 + SSSE3 class
// (the default build), "PC" for the portable build without vector code.
#if KRO_SIMD
#define KRO_TARGET_CODE {'S', 'S', 0, 0}
#else
#define KRO_TARGET_CODE {'P', 'C', 0, 0}
#endif

constexpr KroVersionRecord kVersion = {
    9, 0, 1, 49101, KRO_TARGET_CODE, "kroCC Tern (q5)", "9.0.1 (r49101)", "Oct 19 2015",
};

}  // namespace

const KroVersionRecord* kroccGetLibVersion() { return &kVersion; }

}  // namespace kro::wrap
