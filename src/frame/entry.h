// Entry table and the wrappers behind the exports.
//
// Each export of krocc.h is a stub of one indirect jump through its slot of kroEntryTable; the
// slot holds the address of the export's wrapper, kro::wrap::<export name>, which has exactly
// the export's signature. Family sources define their wrappers in namespace kro::wrap.
#pragma once

#include <cstddef>

#include "krocc.h"

namespace kro::wrap {
// Every wrapper is declared with the type of its export's prototype, so a wrapper whose
// signature drifts from the header fails to link instead of being called wrongly.
#define KRO_EXPORT(name) decltype(::name) name;
#include "frame/exports.inc"
#undef KRO_EXPORT
}  // namespace kro::wrap

namespace kro {

// Names of all exports in slot order (byte order of the names).
extern const char* const kExportNames[];
extern const std::size_t kExportCount;

}  // namespace kro

extern "C" {
using KroEntryFn = void (*)();
// One slot per export, filled at build time; nothing writes it at run time.
__attribute__((visibility("hidden"))) extern const KroEntryFn kroEntryTable[];
}
