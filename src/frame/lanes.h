// Scalar emulation of 16-bit vector lane arithmetic.
//
// The vector bodies of the kernels work in 16-bit lanes with high-half multiplies and
// saturating adds; their scalar twins compute the same values with these helpers, one lane at a
// time, so that a twin reads like the formula it implements and gives the same bits.
#pragma once

#include <cstdint>

namespace kro::lane {

// High 16 bits of the 32-bit product of two unsigned 16-bit values (pmulhuw).
constexpr uint16_t HiU(uint16_t a, uint16_t b) {
  return static_cast<uint16_t>((uint32_t{a} * uint32_t{b}) >> 16);
}

// High 16 bits of the 32-bit product of two signed 16-bit values (pmulhw).
constexpr int16_t HiS(int16_t a, int16_t b) {
  return static_cast<int16_t>((int32_t{a} * int32_t{b}) >> 16);
}

// Rounded high product ((a * b >> 14) + 1) >> 1 (pmulhrsw); -32768 * -32768 wraps to -32768.
constexpr int16_t MulRound(int16_t a, int16_t b) {
  return static_cast<int16_t>(static_cast<uint16_t>((((int32_t{a} * int32_t{b}) >> 14) + 1) >> 1));
}

constexpr int16_t SatS16(int32_t x) {
  return static_cast<int16_t>(x < -32768 ? -32768 : (x > 32767 ? 32767 : x));
}
constexpr uint16_t SatU16(int32_t x) {
  return static_cast<uint16_t>(x < 0 ? 0 : (x > 65535 ? 65535 : x));
}

// Saturating signed adds and subtracts (paddsw, psubsw).
constexpr int16_t AddS(int16_t a, int16_t b) { return SatS16(int32_t{a} + b); }
constexpr int16_t SubS(int16_t a, int16_t b) { return SatS16(int32_t{a} - b); }
// Saturating unsigned adds and subtracts (paddusw, psubusw).
constexpr uint16_t AddU(uint16_t a, uint16_t b) { return SatU16(int32_t{a} + b); }
constexpr uint16_t SubU(uint16_t a, uint16_t b) { return SatU16(int32_t{a} - b); }
// Wrapping 16-bit add and subtract (paddw, psubw).
constexpr int16_t Add(int16_t a, int16_t b) {
  return static_cast<int16_t>(static_cast<uint16_t>(a + b));
}
constexpr int16_t Sub(int16_t a, int16_t b) {
  return static_cast<int16_t>(static_cast<uint16_t>(a - b));
}

// Arithmetic and logical right shifts of a lane (psraw, psrlw).
constexpr int16_t Sra(int16_t a, int n) { return static_cast<int16_t>(a >> n); }
constexpr uint16_t Srl(uint16_t a, int n) { return static_cast<uint16_t>(a >> n); }

// Signed lane to unsigned byte with saturation (packuswb).
constexpr uint8_t PackU8(int16_t a) {
  return static_cast<uint8_t>(a < 0 ? 0 : (a > 255 ? 255 : a));
}

}  // namespace kro::lane

namespace kro {

// Clamp of a 32-bit value to 0..255, as the scalar tails' clamp tables give it.
constexpr uint8_t Sat8(int32_t x) { return static_cast<uint8_t>(x < 0 ? 0 : (x > 255 ? 255 : x)); }
// Low 8 bits, for tails that store without clamping.
constexpr uint8_t Low8(int32_t x) { return static_cast<uint8_t>(x); }

}  // namespace kro
