// Adaptive homogeneity-directed demosaicing: the pieces that tests reach directly.
#pragma once

#include <cstdint>

#include "krocc.h"

namespace kro::ahd {

// Colour code of a source position: 0 red, 1 green in a row of blue, 2 blue, 3 green in a row
// of red. The code of the next column is code ^ 3, that of the next row code ^ 1.
int PositionCode(int grid, int x, int y);

// One strip of the partition: its first column and row, width and height, exactly as computed
// (values can be negative or reach outside the region for small regions).
struct Strip {
  int x, y, width, height;
};

// The region after trimming to the image, and its five strips in the order they run:
// interior, top, bottom, left, right. A strip runs only if its width and height are positive.
struct Plan {
  int x1, y1, w1, h1;
  bool empty;  // w1 or h1 below 1: nothing is done
  Strip strips[5];
};

Plan PlanStrips(KroRect rect, KroSize size, int grid);

// The votes of one row of 8-bit or 16-bit results held in scratch rows (n entries a row, ring
// position t >= 1), through the vector body where the build has one, or the scalar steps alone.
void VoteRow8u(uint8_t* tmp, int tmpStep, int n, int t, bool vector);
void VoteRow16u(uint8_t* tmp, int tmpStep, int n, int t, bool vector);

}  // namespace kro::ahd
