// Writes the demo's test chart (256x192 PNG): saturated primaries and secondaries, skin tones,
// ramps, a hue sweep, and fine detail (a zone plate, one-pixel checks and lines, coloured
// stripes, small text). Every value comes from the formulas below, so the chart can be made
// again bit for bit: kro_make_chart data/chart.png
#include <cmath>
#include <cstdio>

#include "tool.h"

using kroconv::Image;

namespace {

void Fill(Image& im, int x0, int y0, int w, int h, int r, int g, int b) {
  for (int y = y0; y < y0 + h; ++y)
    for (int x = x0; x < x0 + w; ++x) {
      im.At(x, y, 0) = static_cast<uint16_t>(r);
      im.At(x, y, 1) = static_cast<uint16_t>(g);
      im.At(x, y, 2) = static_cast<uint16_t>(b);
    }
}

int Clamp(double v) { return v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(std::lround(v)); }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: kro_make_chart OUT.png\n");
    return 1;
  }
  Image im;
  im.Resize(256, 192, 3, 8);
  // Primaries and secondaries, white and black: 8 patches of 32x40.
  const int sat[8][3] = {{255, 0, 0},   {0, 255, 0},   {0, 0, 255},     {0, 255, 255},
                         {255, 0, 255}, {255, 255, 0}, {255, 255, 255}, {0, 0, 0}};
  for (int i = 0; i < 8; ++i) Fill(im, i * 32, 0, 32, 40, sat[i][0], sat[i][1], sat[i][2]);
  // Skin tones from light to dark: 8 patches of 32x32.
  const int skin[8][3] = {{255, 224, 196}, {241, 194, 167}, {232, 190, 172}, {224, 172, 140},
                          {198, 134, 103}, {161, 102, 74},  {124, 80, 60},   {92, 58, 42}};
  for (int i = 0; i < 8; ++i) Fill(im, i * 32, 40, 32, 32, skin[i][0], skin[i][1], skin[i][2]);
  // Ramps 0..255 across the width: grey, red, green, blue, 8 rows each.
  for (int x = 0; x < 256; ++x) {
    Fill(im, x, 72, 1, 8, x, x, x);
    Fill(im, x, 80, 1, 8, x, 0, 0);
    Fill(im, x, 88, 1, 8, 0, x, 0);
    Fill(im, x, 96, 1, 8, 0, 0, x);
  }
  // Hue sweep across, full value at the top falling to a third at the bottom.
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 256; ++x) {
      double h = x * 6.0 / 256.0, v = 1.0 - y / 48.0;
      int sector = static_cast<int>(h);
      double f = h - sector;
      double rgb[6][3] = {{1, f, 0}, {1 - f, 1, 0}, {0, 1, f}, {0, 1 - f, 1}, {f, 0, 1}, {1, 0, 1 - f}};
      Fill(im, x, 104 + y, 1, 1, Clamp(255 * v * rgb[sector][0]), Clamp(255 * v * rgb[sector][1]),
           Clamp(255 * v * rgb[sector][2]));
    }
  // Fine detail: a zone plate on the left, checks, lines and stripes on the right.
  for (int y = 0; y < 56; ++y)
    for (int x = 0; x < 112; ++x) {
      double dx = x - 56, dy = y - 28;
      int g = Clamp(127.5 + 127.5 * std::cos((dx * dx + dy * dy) * M_PI / 112.0));
      Fill(im, x, 136 + y, 1, 1, g, g, g);
    }
  for (int y = 136; y < 192; ++y)
    for (int x = 112; x < 256; ++x) {
      int lx = x - 112, ly = y - 136;
      int r, g, b;
      if (lx < 36) {
        r = g = b = ((lx + ly) & 1) ? 255 : 0;  // one-pixel checks
      } else if (lx < 72) {
        r = g = b = (lx & 1) ? 230 : 25;  // one-pixel vertical lines
      } else if (lx < 108) {
        r = g = b = (ly & 1) ? 230 : 25;  // one-pixel horizontal lines
      } else if (ly < 28) {
        bool odd = lx & 1;  // red against cyan, one pixel each
        r = odd ? 0 : 255, g = odd ? 255 : 0, b = odd ? 255 : 0;
      } else {
        bool odd = ly & 1;  // blue against yellow, one row each
        r = odd ? 255 : 0, g = odd ? 255 : 0, b = odd ? 0 : 255;
      }
      Fill(im, x, y, 1, 1, r, g, b);
    }
  kroconv::DrawText(im, 4, 4, "KROCC TEST CHART", 1, 0);
  try {
    kroconv::WritePng(im, argv[1]);
  } catch (const kroconv::Error& e) {
    std::fprintf(stderr, "kro_make_chart: %s\n", e.message.c_str());
    return e.code;
  }
  return 0;
}
