// Command-line parsing: positional arguments and --options, checked against what each
// subcommand accepts.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kroconv {

struct Args {
  std::vector<std::string> positional;
  std::map<std::string, std::string> options;  // flags map to ""

  bool Has(const std::string& name) const { return options.count(name) != 0; }
  std::string Get(const std::string& name, const std::string& fallback = "") const;
  long GetInt(const std::string& name, long fallback, long lo, long hi) const;
  // "WxH"; fails naming the option when malformed.
  void GetSize(const std::string& name, int& width, int& height) const;
};

// valued: options that take a value; flags: options without one. Fails on anything else.
Args ParseArgs(const std::string& command, int argc, char** argv, const std::set<std::string>& valued,
               const std::set<std::string>& flags);

}  // namespace kroconv
