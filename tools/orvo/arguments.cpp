#include "arguments.hpp"

#include <algorithm>
#include <cstdio>

namespace orvo::cli {

bool Arguments::has(std::string_view name) const {
  return std::any_of(options.begin(), options.end(),
                     [&](const auto& option) { return option.first == name; });
}

const std::string* Arguments::value(std::string_view name) const {
  const std::string* found = nullptr;
  for (const auto& [option, value] : options) {
    if (option == name) found = &value;
  }
  return found;
}

Arguments splitArguments(const std::vector<std::string>& args,
                         std::initializer_list<KnownOption> known, OptionPlacement placement) {
  Arguments out;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool looksLikeOption = !optionsEnded && a.size() > 1 && a[0] == '-';
    if (!looksLikeOption) {
      out.operands.push_back(a);
      if (placement == OptionPlacement::BeforeOperands) optionsEnded = true;
      continue;
    }
    if (a == "--") {
      optionsEnded = true;
      continue;
    }
    if (a == "--help" || a == "-h") {
      out.help = true;
      return out;
    }
    const auto option =
        std::find_if(known.begin(), known.end(), [&](const KnownOption& k) { return k.name == a; });
    if (option == known.end()) {
      // Cut: the text is echoed in a message and may be anything.
      out.error = "unknown option " + a.substr(0, 40);
      return out;
    }
    if (!option->takesValue) {
      out.options.emplace_back(a, std::string());
      continue;
    }
    if (i + 1 == args.size()) {
      out.error = a + " needs a value";
      return out;
    }
    out.options.emplace_back(a, args[++i]);
  }
  return out;
}

int usageError(std::string_view verb, const std::string& what, const char* help) {
  std::fprintf(stderr, "orvo %.*s: %s\n%s", static_cast<int>(verb.size()), verb.data(),
               what.c_str(), help);
  return 2;
}

}  // namespace orvo::cli
