// A 3x5 bitmap font for the contact sheet's labels: capitals (lower case is drawn as capitals),
// digits and a little punctuation. Glyphs advance by 4 font pixels.
#include <cstring>

#include "tool.h"

namespace kroconv {
namespace {

struct Glyph {
  char c;
  const char* rows;  // 5 rows of 3, '#' set
};

const Glyph kGlyphs[] = {
    {'A', ".#.#.#####.##.#"}, {'B', "##.#.###.#.###."}, {'C', ".###..#..#...##"},
    {'D', "##.#.##.##.###."}, {'E', "####..##.#..###"}, {'F', "####..##.#..#.."},
    {'G', ".###..#.##.#.##"}, {'H', "#.##.#####.##.#"}, {'I', "###.#..#..#.###"},
    {'J', "..#..#..##.#.#."}, {'K', "#.###.#..##.#.#"}, {'L', "#..#..#..#..###"},
    {'M', "#.########.##.#"},  {'N', "##.#.##.##.##.#"}, {'O', ".#.#.##.##.#.#."},
    {'P', "##.#.###.#..#.."}, {'Q', ".#.#.##.###..##"}, {'R', "##.#.###.#.##.#"},
    {'S', ".###...#...###."}, {'T', "###.#..#..#..#."}, {'U', "#.##.##.##.####"},
    {'V', "#.##.##.##.#.#."}, {'W', "#.##.########.#"},  {'X', "#.##.#.#.#.##.#"},
    {'Y', "#.##.#.#..#..#."}, {'Z', "###..#.#.#..###"}, {'0', "####.##.##.####"},
    {'1', ".#.##..#..#.###"}, {'2', "##...#.#.#..###"}, {'3', "##...#.#...###."},
    {'4', "#.##.####..#..#"}, {'5', "####..##...###."}, {'6', ".###..####.####"},
    {'7', "###..#.#..#..#."}, {'8', "####.#####.####"}, {'9', "####.####..###."},
    {'-', "......###......"}, {':', "....#.....#...."}, {'.', ".............#."},
    {'/', "..#..#.#.#..#.."}, {'%', "#....#.#.#....#"}, {'+', "....#.###.#...."},
    {'(', ".#.#..#..#...#."}, {')', ".#...#..#..#.#."}, {',', "..........#.#.."},
    {'=', "...###...###..."}, {'_', "............###"}, {'?', "##...#.#.....#."},
};

const char* Find(char c) {
  if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  for (const Glyph& g : kGlyphs)
    if (g.c == c) return g.rows;
  return nullptr;
}

}  // namespace

int TextWidth(const std::string& text, int scale) {
  return text.empty() ? 0 : (static_cast<int>(text.size()) * 4 - 1) * scale;
}

void DrawText(Image& image, int x, int y, const std::string& text, int scale, uint16_t value) {
  for (size_t i = 0; i < text.size(); ++i) {
    const char* rows = Find(text[i]);
    if (!rows) continue;  // space and anything without a glyph
    size_t n = std::strlen(rows);
    for (int r = 0; r < 5; ++r)
      for (int c = 0; c < 3; ++c) {
        size_t bit = static_cast<size_t>(r) * 3 + c;
        if (bit >= n || rows[bit] != '#') continue;
        for (int dy = 0; dy < scale; ++dy)
          for (int dx = 0; dx < scale; ++dx) {
            int px = x + (static_cast<int>(i) * 4 + c) * scale + dx, py = y + r * scale + dy;
            if (px < 0 || py < 0 || px >= image.width || py >= image.height) continue;
            for (int ch = 0; ch < image.channels; ++ch) image.At(px, py, ch) = value;
          }
      }
  }
}

}  // namespace kroconv
