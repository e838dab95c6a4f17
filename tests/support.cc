#include "support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace kro::test {

namespace {
constexpr std::size_t kMargin = 256;
}

Plane::Plane(int rowBytes, int height, int step, int offset)
    : rowBytes_(rowBytes), height_(height), step_(step == 0 ? rowBytes : step) {
  const std::size_t span =
      height > 0 ? static_cast<std::size_t>(height - 1) * static_cast<std::size_t>(step_) + rowBytes
                 : 0;
  mem_.assign(kMargin + 64 + span + kMargin, kCanary);
  const std::uintptr_t base = reinterpret_cast<std::uintptr_t>(mem_.data()) + kMargin;
  const std::uintptr_t aligned = (base + 63) & ~std::uintptr_t{63};
  origin_ = reinterpret_cast<uint8_t*>(aligned + static_cast<std::uintptr_t>(offset & 63));
  lead_ = static_cast<std::size_t>(origin_ - mem_.data());
}

void Plane::FillRandom(std::mt19937& rng) {
  for (int y = 0; y < height_; ++y)
    for (int x = 0; x < rowBytes_; ++x) row(y)[x] = static_cast<uint8_t>(rng());
}

void Plane::Fill(uint8_t value) {
  for (int y = 0; y < height_; ++y) std::memset(row(y), value, static_cast<std::size_t>(rowBytes_));
}

std::vector<uint8_t> Plane::Region() const {
  std::vector<uint8_t> out;
  out.reserve(static_cast<std::size_t>(rowBytes_) * static_cast<std::size_t>(height_));
  for (int y = 0; y < height_; ++y) out.insert(out.end(), row(y), row(y) + rowBytes_);
  return out;
}

bool Plane::CanariesIntact() const {
  for (std::size_t i = 0; i < mem_.size(); ++i) {
    const std::ptrdiff_t off = static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(lead_);
    bool inside = false;
    if (off >= 0 && height_ > 0) {
      const std::ptrdiff_t y = off / step_, x = off % step_;
      inside = y < height_ && x < rowBytes_;
    }
    if (!inside && mem_[i] != kCanary) return false;
  }
  return true;
}

GuardedBuffer::GuardedBuffer(std::size_t bytes, bool guardStart) : bytes_(bytes) {
  const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t dataPages = (bytes + page - 1) / page;
  mapBytes_ = (dataPages + 2) * page;
  map_ = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (map_ == MAP_FAILED) std::abort();
  uint8_t* base = static_cast<uint8_t*>(map_);
  mprotect(base, page, PROT_NONE);
  mprotect(base + (dataPages + 1) * page, page, PROT_NONE);
  data_ = guardStart ? base + page : base + (dataPages + 1) * page - bytes;
}

GuardedBuffer::~GuardedBuffer() { munmap(map_, mapBytes_); }

std::vector<int> AllWidths() {
  std::vector<int> w;
  for (int i = 1; i <= 130; ++i) w.push_back(i);
  return w;
}

}  // namespace kro::test
