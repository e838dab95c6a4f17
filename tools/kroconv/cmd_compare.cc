// kroconv compare: the largest and the mean absolute sample difference of two images of the
// same shape, for checking round trips.
#include <cstdio>
#include <cstdlib>

#include "args.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {

void CompareHelp() {
  std::printf(
      "usage: kroconv compare A B\n\n"
      "Prints 'max M mean X' over all samples of two images (PNG, PPM/PGM) of the same size,\n"
      "channel count and depth. Exit code 3 when the shapes differ.\n");
}

int Compare(int argc, char** argv) {
  Args a = ParseArgs("compare", argc, argv, {}, {});
  if (a.positional.size() != 2) Fail(kExitUsage, "compare wants two image files");
  Image x = ReadImage(a.positional[0]), y = ReadImage(a.positional[1]);
  if (x.width != y.width || x.height != y.height || x.channels != y.channels || x.bits != y.bits)
    Fail(kExitData, a.positional[0] + " and " + a.positional[1] + " differ in size, channels or depth");
  long max = 0;
  double sum = 0;
  for (size_t i = 0; i < x.samples.size(); ++i) {
    long d = std::labs(static_cast<long>(x.samples[i]) - y.samples[i]);
    max = d > max ? d : max;
    sum += static_cast<double>(d);
  }
  std::printf("max %ld mean %.4f\n", max, x.samples.empty() ? 0.0 : sum / static_cast<double>(x.samples.size()));
  return kExitOk;
}

}  // namespace kroconv
