// The gamma tables, generated at build time by src/tables/gen_gamma.cc.
#pragma once

#include <cstdint>

namespace kro::tables {
extern const uint8_t kGammaFwd8u[256];
extern const uint8_t kGammaInv8u[256];
extern const uint16_t kGammaFwd16u[65536];
extern const uint16_t kGammaInv16u[65536];
}  // namespace kro::tables
