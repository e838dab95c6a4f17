// Benchmark driver. Each family's file registers its cases; every case reports the GB/s of its
// input plus output bytes, and the memcpy cases of the same byte counts run in the same process
// so that ratios are measured side by side.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

// memcpy of `bytes` bytes, the yardstick every conversion is compared with.
void BM_Memcpy(benchmark::State& state) {
  const auto bytes = static_cast<std::size_t>(state.range(0));
  std::vector<unsigned char> a(bytes, 1), b(bytes);
  for (auto _ : state) {
    std::memcpy(b.data(), a.data(), bytes);
    benchmark::DoNotOptimize(b.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(2 * bytes));
}
BENCHMARK(BM_Memcpy)->Arg(64 * 64 * 3)->Arg(1920 * 1080 * 3);

}  // namespace

int main(int argc, char** argv) {
  const KroVersionRecord* v = kroccGetLibVersion();
  benchmark::AddCustomContext("krocc", v->versionText);
#ifdef KRO_HAVE_OPENCV
  cv::setNumThreads(1);  // every case runs single-threaded
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
