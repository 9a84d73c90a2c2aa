#include "member_verbs.hpp"

#include <cstdio>
#include <string_view>

#include "arguments.hpp"
#include "json_bridge.hpp"
#include "orvogeneric/automation.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kMembersHelp =
    "usage: orvo members [CLASS]\n"
    "Lists the classes and the signatures of their members, or those of one class.\n"
    "Exit status: 0 listed, 1 no such class, 2 usage.\n";

constexpr const char* kHelpHelp =
    "usage: orvo help CLASS | CLASS.MEMBER\n"
    "Explains a class (each member with its line) or a member (what it does, and each\n"
    "parameter: its type, whether it is in/out or optional, its default, what it takes).\n"
    "orvo members lists what there is; orvo --help the verbs.\n"
    "Exit status: 0 explained, 1 no such class or member, 2 usage.\n";

// "Boolean IsLongInArray(Long Find, ...)", the name qualified by the class when one is given.
std::string signature(const automation::MemberInfo& m, std::string_view qualifier = {}) {
  static constexpr const char* kKinds[] = {"", "get ", "let "};
  std::string out = kKinds[static_cast<int>(m.kind)];
  out.append(m.resultType).append(" ");
  if (!qualifier.empty()) out.append(qualifier).append(".");
  out.append(m.name).append("(");
  for (std::size_t i = 0; i < m.params.size(); ++i) {
    const auto& p = m.params[i];
    out.append(i > 0 ? ", " : "")
        .append(p.direction == automation::Direction::InOut ? "inout " : "")
        .append(p.optional ? "optional " : "")
        .append(p.type)
        .append(" ")
        .append(p.name);
  }
  return out + ")";
}

// "event Timer()": what an object raises, which orvo batch writes as {"event": NAME, ...}.
std::string eventSignature(const automation::EventInfo& e) {
  std::string out = "event ";
  out.append(e.name).append("(");
  for (std::size_t i = 0; i < e.params.size(); ++i) {
    out.append(i > 0 ? ", " : "").append(e.params[i].type).append(" ").append(e.params[i].name);
  }
  return out + ")";
}

int noClass(std::string_view verb, const std::string& name) {
  std::fprintf(stderr, "orvo %.*s: no class %s (orvo members lists them all)\n",
               static_cast<int>(verb.size()), verb.data(), name.c_str());
  return 1;
}

}  // namespace

int commandMembers(const std::vector<std::string>& args) {
  const Arguments a = splitArguments(args, {});
  if (a.help) return std::fputs(kMembersHelp, stdout) < 0 ? 3 : done(0);
  if (!a.error.empty()) return usageError("members", a.error, kMembersHelp);
  if (a.operands.size() > 1) return usageError("members", "at most one CLASS", kMembersHelp);
  const automation::ClassInfo* only = nullptr;
  if (!a.operands.empty()) {
    only = automation::findClass(a.operands[0]);
    if (only == nullptr) return noClass("members", a.operands[0]);
  }
  std::string out;
  for (const auto& cls : automation::classes()) {
    if (only != nullptr && only != &cls) continue;
    out.append(cls.name).append(cls.global ? " (global)" : "").append("\n");
    for (const auto& m : cls.members) out.append("  ").append(signature(m)).append("\n");
    for (const auto& e : cls.events) out.append("  ").append(eventSignature(e)).append("\n");
  }
  put(out);
  return done(0);
}

int commandHelp(const std::vector<std::string>& args) {
  const Arguments a = splitArguments(args, {});
  if (a.help) return std::fputs(kHelpHelp, stdout) < 0 ? 3 : done(0);
  if (!a.error.empty()) return usageError("help", a.error, kHelpHelp);
  if (a.operands.size() != 1) return usageError("help", "one CLASS or CLASS.MEMBER", kHelpHelp);
  const std::string& target = a.operands[0];
  const auto dot = target.find('.');
  const std::string className = target.substr(0, dot);
  const auto* cls = automation::findClass(className);
  if (cls == nullptr) return noClass("help", className);
  std::string out;
  if (dot == std::string::npos) {
    out.append(cls->name).append(cls->global ? " (global)" : "").append("\n");
    for (const auto& m : cls->members) {
      out.append("  ").append(signature(m)).append("\n      ").append(m.doc).append("\n");
    }
    for (const auto& e : cls->events) {
      out.append("  ").append(eventSignature(e)).append("\n      ").append(e.doc).append("\n");
    }
    put(out);
    return done(0);
  }
  const std::string name = target.substr(dot + 1);
  bool found = false;
  // A property has a get and a let of one name: both are explained.
  for (const auto kind : {automation::MemberKind::Method, automation::MemberKind::PropertyGet,
                          automation::MemberKind::PropertyLet}) {
    const auto* m = automation::findMember(*cls, name, kind);
    if (m == nullptr) continue;
    found = true;
    out.append(signature(*m, cls->name)).append("\n  ").append(m->doc);
    out.append("\n");
    for (const auto& p : m->params) {
      out.append("  ").append(p.name).append(": ").append(p.type);
      if (p.direction == automation::Direction::InOut) out.append(", in/out");
      if (p.optional) out.append(", optional");
      if (p.hasDefault && p.defaultValue != nullptr) {
        ObjectTable none;
        std::string shown;
        appendJson(shown, p.defaultValue(), none);
        out.append(", default ").append(shown);
      }
      out.append(" - ").append(p.doc).append("\n");
    }
  }
  if (!found) {
    std::fprintf(stderr, "orvo help: %s has no member %s (orvo help %s lists them)\n",
                 std::string(cls->name).c_str(), name.c_str(), std::string(cls->name).c_str());
    return 1;
  }
  put(out);
  return done(0);
}

}  // namespace orvo::cli
