// kroconv: converts image files through the library's exports.
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "colour.h"
#include "commands.h"
#include "tool.h"

namespace kroconv {

bool g_warned = false;

namespace {

// What each status of the library means, for the one line that reports it.
const char* StatusText(kroStatus status) {
  switch (status) {
    case kroStatusNegativeInput: return "a negative input was met";
    case kroStatusOddSize: return "odd width or height: the even part was converted";
    case kroStatusBadArgument: return "Bayer grid code out of range";
    case kroStatusBadSize: return "image too small for this conversion";
    case kroStatusNullPointer: return "null pointer";
    case kroStatusBadStep: return "bad row step";
    case kroStatusBadContext: return "bad noise generator state";
    case kroStatusBadChannel: return "bad channel count";
    case kroStatusBadGammaRange: return "empty gamma range";
    case kroStatusBadDitherLevels: return "levels out of range for the sample type";
    case kroStatusBadNoise: return "noise out of range";
    case kroStatusBadDitherType: return "unknown dither kind";
    default: return "unknown status";
  }
}

}  // namespace

void CheckStatus(kroStatus status, const char* function) {
  if (status < 0)
    Fail(kExitLibrary, std::string(function) + " failed with status " + std::to_string(status) + " (" +
                           StatusText(status) + ")");
  if (status > 0) {
    std::fprintf(stderr, "kroconv: warning: %s returned status %d (%s); output kept\n", function, status,
                 StatusText(status));
    g_warned = true;
  }
}

}  // namespace kroconv

#if KRO_HAS_kroiGammaFwd_8u_C3R && KRO_HAS_kroiGammaFwd_16u_AC4R
#define KRO_HAS_GAMMA true
#else
#define KRO_HAS_GAMMA false
#endif

namespace {

struct Command {
  const char* name;
  const char* summary;
  int (*run)(int, char**);
  void (*help)();
};

const Command kCommands[] = {
    {"convert", "convert between PNG, PPM/PGM, raw YUV layouts, Y4M and raw Bayer", kroconv::Convert,
     kroconv::ConvertHelp},
    {"compare", "print the largest and mean sample difference of two images", kroconv::Compare,
     kroconv::CompareHelp},
    {"model", "show a colour image's channels in another colour model", kroconv::Model,
     kroconv::ModelHelp},
    {"gamma", "apply the BT.709 transfer curve or its inverse (8 or 16 bits)", kroconv::Gamma,
     kroconv::GammaHelp},
    {"demosaic", "turn a raw Bayer plane into an RGB image (bilinear or AHD)", kroconv::Demosaic,
     kroconv::DemosaicHelp},
    {"dither", "reduce an image to a few levels per channel, with or without dither",
     kroconv::Dither, kroconv::DitherHelp},
    {"sheet", "lay images out side by side with labels (a contact sheet)", kroconv::Sheet,
     kroconv::SheetHelp},
};

// model is offered only when the library has a colour matrix, and each family's subcommand only
// with that family.
bool Offered(const Command& c) {
  if (std::strcmp(c.name, "gamma") == 0) return KRO_HAS_GAMMA;
  if (std::strcmp(c.name, "demosaic") == 0) return !kroconv::DemosaicMethods().empty();
  if (std::strcmp(c.name, "dither") == 0) return kroconv::DitherOffered();
  return std::strcmp(c.name, "model") != 0 || !kroconv::Matrices().empty();
}

void Help() {
  const KroVersionRecord* v = kroccGetLibVersion();
  std::printf(
      "kroconv: convert image files with the %s library %s\n\n"
      "usage: kroconv <subcommand> [options] ...\n"
      "       kroconv <subcommand> --help\n"
      "       kroconv --version\n\nsubcommands in this build:\n",
      v->name, v->versionText);
  for (const Command& c : kCommands)
    if (Offered(c)) std::printf("  %-9s %s\n", c.name, c.summary);
  std::printf(
      "\nexit codes: 0 done (warnings from the library are printed, output kept), 1 usage,\n"
      "2 file cannot be opened/read/written, 3 file contents do not fit, 4 library error\n");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h") ||
        !std::strcmp(argv[1], "help")) {
      Help();
      return argc < 2 ? kroconv::kExitUsage : 0;
    }
    if (!std::strcmp(argv[1], "--version")) {
      const KroVersionRecord* v = kroccGetLibVersion();
      std::printf("kroconv with %s %s (%s)\n", v->name, v->versionText, v->dateText);
      return 0;
    }
    for (const Command& c : kCommands) {
      if (std::strcmp(argv[1], c.name) || !Offered(c)) continue;
      for (int i = 2; i < argc; ++i)
        if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
          c.help();
          return 0;
        }
      return c.run(argc - 2, argv + 2);
    }
    std::fprintf(stderr, "kroconv: unknown subcommand '%s' (kroconv --help lists them)\n", argv[1]);
    return kroconv::kExitUsage;
  } catch (const kroconv::Error& e) {
    std::fprintf(stderr, "kroconv: %s\n", e.message.c_str());
    return e.code;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "kroconv: out of memory\n");
    return kroconv::kExitData;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "kroconv: %s\n", e.what());
    return kroconv::kExitData;
  }
}
