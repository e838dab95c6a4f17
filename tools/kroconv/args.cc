#include "args.h"

#include <cerrno>
#include <cstdlib>

#include "tool.h"

namespace kroconv {

std::string Args::Get(const std::string& name, const std::string& fallback) const {
  auto it = options.find(name);
  return it == options.end() ? fallback : it->second;
}

long Args::GetInt(const std::string& name, long fallback, long lo, long hi) const {
  auto it = options.find(name);
  if (it == options.end()) return fallback;
  const char* text = it->second.c_str();
  char* end = nullptr;
  errno = 0;
  long v = std::strtol(text, &end, 10);
  if (!*text || *end || errno || v < lo || v > hi)
    Fail(kExitUsage, "--" + name + " wants a whole number in " + std::to_string(lo) + ".." +
                         std::to_string(hi) + ", not '" + it->second + "'");
  return v;
}

void Args::GetSize(const std::string& name, int& width, int& height) const {
  auto it = options.find(name);
  if (it == options.end()) Fail(kExitUsage, "--" + name + " WxH is needed for this input");
  const std::string& s = it->second;
  size_t x = s.find('x');
  char* end = nullptr;
  long w = 0, h = 0;
  bool ok = x != std::string::npos && x > 0 && x + 1 < s.size();
  if (ok) {
    w = std::strtol(s.c_str(), &end, 10);
    ok = end == s.c_str() + x;
  }
  if (ok) {
    h = std::strtol(s.c_str() + x + 1, &end, 10);
    ok = *end == 0;
  }
  if (!ok || w < 1 || h < 1 || w > 65535 || h > 65535)
    Fail(kExitUsage, "--" + name + " wants WxH with both in 1..65535, not '" + s + "'");
  width = static_cast<int>(w);
  height = static_cast<int>(h);
}

Args ParseArgs(const std::string& command, int argc, char** argv, const std::set<std::string>& valued,
               const std::set<std::string>& flags) {
  Args args;
  for (int i = 0; i < argc; ++i) {
    std::string a = argv[i];
    if (a.size() > 2 && a[0] == '-' && a[1] == '-') {
      std::string name = a.substr(2), value;
      size_t eq = name.find('=');
      bool inline_value = eq != std::string::npos;
      if (inline_value) value = name.substr(eq + 1), name = name.substr(0, eq);
      if (valued.count(name)) {
        if (!inline_value) {
          if (i + 1 >= argc) Fail(kExitUsage, "--" + name + " needs a value");
          value = argv[++i];
        }
      } else if (flags.count(name)) {
        if (inline_value) Fail(kExitUsage, "--" + name + " takes no value");
      } else {
        Fail(kExitUsage, "unknown option --" + name + " for '" + command + "' (see kroconv " + command + " --help)");
      }
      args.options[name] = value;
    } else if (a.size() > 1 && a[0] == '-') {
      Fail(kExitUsage, "unknown option " + a + " for '" + command + "'");
    } else {
      args.positional.push_back(a);
    }
  }
  return args;
}

}  // namespace kroconv
