// The entry table, the export stubs that jump through it, and the build-time checks on the
// export list.
#include "frame/entry.h"

#include <cstddef>

namespace kro {
namespace {

#define KRO_EXPORT(name) #name,
constexpr const char* kNames[] = {
#include "frame/exports.inc"
};
#undef KRO_EXPORT

constexpr bool ByteLess(const char* a, const char* b) {
  for (;; ++a, ++b) {
    const unsigned char ca = static_cast<unsigned char>(*a);
    const unsigned char cb = static_cast<unsigned char>(*b);
    if (ca != cb) return ca < cb;
    if (ca == 0) return false;
  }
}

constexpr bool StrictlyInByteOrder() {
  for (std::size_t i = 1; i < sizeof(kNames) / sizeof(kNames[0]); ++i) {
    if (!ByteLess(kNames[i - 1], kNames[i])) return false;
  }
  return true;
}

static_assert(StrictlyInByteOrder(),
              "frame/exports.inc must list each export once, in byte order of the names");

}  // namespace

const char* const kExportNames[] = {
#define KRO_EXPORT(name) #name,
#include "frame/exports.inc"
#undef KRO_EXPORT
};
const std::size_t kExportCount = sizeof(kExportNames) / sizeof(kExportNames[0]);

}  // namespace kro

extern "C" {
const KroEntryFn kroEntryTable[] = {
#define KRO_EXPORT(name) reinterpret_cast<KroEntryFn>(&kro::wrap::name),
#include "frame/exports.inc"
#undef KRO_EXPORT
};
}

// The stubs. Each exported name is one indirect jump through its slot: the caller's registers
// and stack reach the wrapper untouched, so the wrapper runs with the export's exact arguments.
// The slot number is the position in the list, counted by __COUNTER__ (used nowhere else in
// this file).
#define KRO_STR2(x) #x
#define KRO_STR(x) KRO_STR2(x)

#if defined(__x86_64__)
#define KRO_STUB(name, slot)                                                    \
  asm(".text\n"                                                                 \
      ".p2align 4\n"                                                            \
      ".globl " #name "\n"                                                      \
      ".type " #name ", @function\n" #name ":\n"                               \
      "\tjmp *(kroEntryTable + 8 * " KRO_STR(slot) ")(%rip)\n"                  \
      ".size " #name ", . - " #name "\n");
#elif defined(__aarch64__)
#define KRO_STUB(name, slot)                                                    \
  asm(".text\n"                                                                 \
      ".p2align 4\n"                                                            \
      ".globl " #name "\n"                                                      \
      ".type " #name ", %function\n" #name ":\n"                               \
      "\tadrp x16, kroEntryTable + 8 * " KRO_STR(slot) "\n"                     \
      "\tldr x16, [x16, #:lo12:kroEntryTable + 8 * " KRO_STR(slot) "]\n"        \
      "\tbr x16\n"                                                              \
      ".size " #name ", . - " #name "\n");
#else
#error "export stubs are written for x86-64 and AArch64 only"
#endif

#define KRO_EXPORT(name) KRO_STUB(name, __COUNTER__)
#include "frame/exports.inc"
#undef KRO_EXPORT
