// kroconv sheet: a contact sheet, the given images in a grid with a label under each.
#include <algorithm>
#include <cstdio>

#include "args.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {

void SheetHelp() {
  std::printf(
      "usage: kroconv sheet OUT.png [--columns N] [--title TEXT] LABEL=FILE ...\n\n"
      "Places the images (PNG, PPM/PGM; grey shown as grey, 16-bit shown by its high byte)\n"
      "in a grid of N columns (default 4), each cell as large as the largest image, with its\n"
      "label below in a small built-in font.\n");
}

int Sheet(int argc, char** argv) {
  Args a = ParseArgs("sheet", argc, argv, {"columns", "title"}, {});
  if (a.positional.size() < 2) Fail(kExitUsage, "sheet wants an output file and at least one LABEL=FILE");
  const std::string out = a.positional[0];
  int columns = static_cast<int>(a.GetInt("columns", 4, 1, 64));
  std::vector<std::string> labels;
  std::vector<Image> images;
  Progress progress("sheet", static_cast<long>(a.positional.size()) - 1);
  for (size_t i = 1; i < a.positional.size(); ++i) {
    const std::string& item = a.positional[i];
    size_t eq = item.find('=');
    if (eq == std::string::npos || eq == 0 || eq + 1 == item.size())
      Fail(kExitUsage, "sheet item '" + item + "' is not LABEL=FILE");
    labels.push_back(item.substr(0, eq));
    images.push_back(ReadImage(item.substr(eq + 1)));
    progress.Step(static_cast<long>(i));
  }
  const int scale = 2, pad = 8, label_h = 5 * scale + 6;
  int cell_w = 0, cell_h = 0;
  for (size_t i = 0; i < images.size(); ++i) {
    cell_w = std::max({cell_w, images[i].width, TextWidth(labels[i], scale)});
    cell_h = std::max(cell_h, images[i].height);
  }
  int n = static_cast<int>(images.size());
  int cols = std::min(columns, n), rows = (n + cols - 1) / cols;
  std::string title = a.Get("title");
  int top = title.empty() ? pad : pad + 5 * scale + pad;
  long width = static_cast<long>(cols) * (cell_w + pad) + pad;
  long height = top + static_cast<long>(rows) * (cell_h + label_h + pad);
  if (width > 32767 || height > 32767) Fail(kExitUsage, "contact sheet would be larger than 32767 pixels");
  Image sheet;
  sheet.Resize(static_cast<int>(width), static_cast<int>(height), 3, 8);
  std::fill(sheet.samples.begin(), sheet.samples.end(), 48);
  if (!title.empty()) DrawText(sheet, pad, pad, title, scale, 255);
  for (int i = 0; i < n; ++i) {
    const Image& im = images[static_cast<size_t>(i)];
    int x0 = pad + (i % cols) * (cell_w + pad);
    int y0 = top + (i / cols) * (cell_h + label_h + pad);
    int shift = im.bits == 16 ? 8 : 0;
    for (int y = 0; y < im.height; ++y)
      for (int x = 0; x < im.width; ++x)
        for (int c = 0; c < 3; ++c)
          sheet.At(x0 + x, y0 + y, c) =
              static_cast<uint16_t>(im.At(x, y, im.channels == 3 ? c : 0) >> shift);
    DrawText(sheet, x0, y0 + im.height + 4, labels[static_cast<size_t>(i)], scale, 255);
  }
  WritePng(sheet, out);
  return kExitOk;
}

}  // namespace kroconv
