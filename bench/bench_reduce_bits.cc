// ReduceBits: kinds 0 (nearest), 4 (ordered), 1 (Floyd-Steinberg) and 2 (Jarvis-Judice-Ninke) on
// 8u_C1R, 8u_C3R, 16u8u_C1R and 32f8u_C1R at 1920x1080, to 16 levels, without noise, and kind 4
// with noise 20. No peer has these quantisers; the reference is memcpy of the same bytes.
#include "bench_util.h"
#include "krocc.h"

namespace kro::bench {
namespace {

template <class S>
void RegisterReduce(const char* layout, int channels, int kind, int noise,
                    kroStatus (*fn)(const S*, int, Kro8u*, int, KroSize, int, int, int, Kro8u*)) {
  const std::string name = std::string("kroiReduceBits_") + layout + "/kind" +
                           std::to_string(kind) + (noise ? "_noise" + std::to_string(noise) : "") +
                           "/1920x1080";
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const std::size_t samples = std::size_t(kFullW) * kFullH * channels;
    Buffer src(samples * sizeof(S), 1), dst(samples, 2);
    if constexpr (sizeof(S) == 4) {
      std::mt19937 rng(7);
      for (std::size_t i = 0; i < samples; ++i) src.as<float>()[i] = float(rng() % 4096) / 4095.0f;
    }
    int size = 0;
    kroiReduceBitsGetBufferSize(channels == 4 ? 9 : channels, {kFullW, kFullH}, noise, kind, &size);
    std::vector<Kro8u> work(std::size_t(size) + 1);
    const int srcStep = kFullW * channels * int(sizeof(S)), dstStep = kFullW * channels;
    RunConversion(state, samples * sizeof(S), samples, [&] {
      fn(src.as<S>(), srcStep, dst.data(), dstStep, {kFullW, kFullH}, noise, kind, 16, work.data());
    });
  })->Unit(benchmark::kMicrosecond);
}

const bool kRegistered = [] {
  for (int kind : {0, 4, 1, 2}) {
    RegisterReduce<Kro8u>("8u_C1R", 1, kind, 0, kroiReduceBits_8u_C1R);
    RegisterReduce<Kro8u>("8u_C3R", 3, kind, 0, kroiReduceBits_8u_C3R);
    RegisterReduce<Kro16u>("16u8u_C1R", 1, kind, 0, kroiReduceBits_16u8u_C1R);
    RegisterReduce<Kro32f>("32f8u_C1R", 1, kind, 0, kroiReduceBits_32f8u_C1R);
  }
  RegisterReduce<Kro8u>("8u_C3R", 3, 4, 20, kroiReduceBits_8u_C3R);
  RegisterReduce<Kro8u>("8u_C1R", 1, 1, 20, kroiReduceBits_8u_C1R);
  return true;
}();

}  // namespace
}  // namespace kro::bench
