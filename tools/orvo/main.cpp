// orvo: the library's members from the shell. "orvo call" makes one call, "orvo batch" many in
// one process so that process-wide state carries from call to call.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "json_bridge.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"

namespace {

using namespace orvo;
using automation::MemberKind;

constexpr const char* kUsage =
    "usage:\n"
    "  orvo call Class.Member [ARG...] [Name:=ARG...]   one call, one JSON line\n"
    "  orvo batch                                       JSON lines on stdin, one call each\n"
    "  orvo members [Class]                             what can be called\n"
    "ARG is JSON; a bare word that is not JSON is a string.\n"
    "A batch line: {\"call\": \"Class.Member\", \"args\": [...], \"named\": {\"Param\": ...}}\n"
    "              {\"object\": H, \"call\": \"Member\", ...}   a member of a returned object\n"
    "              {\"call\": \"Class.Property\", \"let\": value}\n";

[[noreturn]] void fail(std::int32_t number, const std::string& text) {
  throw Error(number, fromUtf8(text), u"orvo");
}

struct Call {
  std::shared_ptr<Object> target;
  std::string member;
  std::vector<Variant> args;
  std::vector<automation::NamedArgument> named;
  std::optional<Variant> let;
};

std::shared_ptr<Object> classInstance(const std::string& className) {
  const auto* cls = automation::findClass(className);
  if (cls == nullptr) fail(429, "ActiveX component can't create object: no class " + className);
  if (!cls->global) {
    fail(429, "ActiveX component can't create object: " + className +
                  " is handed out by FactoryMethods only");
  }
  return automation::globalInstance(className);
}

std::pair<std::string, std::string> splitTarget(const std::string& target) {
  const auto dot = target.find('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == target.size()) {
    fail(5, "Invalid procedure call or argument: expected Class.Member, got \"" + target + "\"");
  }
  return {target.substr(0, dot), target.substr(dot + 1)};
}

// What the caller passed for a parameter: by position, by name, or nothing.
const Variant* passedValue(const Call& call, const automation::MemberInfo& member,
                           const std::string& name) {
  for (std::size_t i = 0; i < member.params.size() && i < call.args.size(); ++i) {
    if (member.params[i].name == name) return &call.args[i];
  }
  for (const auto& n : call.named) {
    if (n.name.size() == name.size() &&
        std::equal(n.name.begin(), n.name.end(), name.begin(), [](char a, char b) {
          return std::toupper(static_cast<unsigned char>(a)) ==
                 std::toupper(static_cast<unsigned char>(b));
        })) {
      return &n.value;
    }
  }
  return nullptr;
}

std::string run(const Call& call, cli::ObjectTable& objects) {
  const auto* cls = automation::findClass(call.target->className());
  MemberKind kind = MemberKind::Method;
  if (call.let) {
    kind = MemberKind::PropertyLet;
  } else if (cls != nullptr &&
             automation::findMember(*cls, call.member, MemberKind::Method) == nullptr &&
             automation::findMember(*cls, call.member, MemberKind::PropertyGet) != nullptr) {
    kind = MemberKind::PropertyGet;
  }
  const automation::MemberInfo* member =
      cls != nullptr ? automation::findMember(*cls, call.member, kind) : nullptr;
  if (member == nullptr) {
    fail(438, "Object doesn't support this property or method: " +
                  std::string(call.target->className()) + "." + call.member);
  }
  const automation::CallResult result =
      call.let ? automation::invoke(*call.target, call.member, {*call.let}, {}, kind)
               : automation::invoke(*call.target, call.member, call.args, call.named, kind);
  std::string byref;
  for (const auto& [name, value] : result.byref) {
    // Arrays travel by reference so that they are not copied, not because they are answers:
    // an array the call left as it was is not repeated back.
    const Variant* passed = passedValue(call, *member, name);
    if (value.isArray() && passed != nullptr && *passed == value) continue;
    byref +=
        (byref.empty() ? "" : ",") + cli::quote(fromUtf8(name)) + ":" + cli::toJson(value, objects);
  }
  std::string out = "{\"result\":" + cli::toJson(result.result, objects);
  if (!byref.empty()) out += ",\"byref\":{" + byref + "}";
  return out + "}";
}

Variant argumentFromText(const std::string& text, const cli::ObjectTable& objects) {
  const auto parsed = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (parsed.is_discarded()) return Variant(fromUtf8(text));
  return cli::toVariant(parsed, objects);
}

int commandCall(int argc, char** argv) {
  cli::ObjectTable objects;
  try {
    if (argc < 3) fail(5, "Invalid procedure call or argument: orvo call Class.Member [ARG...]");
    const auto [className, member] = splitTarget(argv[2]);
    Call call{classInstance(className), member, {}, {}, std::nullopt};
    static const std::regex namedArg(R"(^([A-Za-z_][A-Za-z0-9_]*):=(.*)$)");
    for (int i = 3; i < argc; ++i) {
      std::smatch m;
      const std::string arg = argv[i];
      if (std::regex_match(arg, m, namedArg)) {
        call.named.push_back({m[1], argumentFromText(m[2], objects)});
      } else {
        if (!call.named.empty())
          fail(5, "Invalid procedure call or argument: positional after named");
        call.args.push_back(argumentFromText(arg, objects));
      }
    }
    std::cout << run(call, objects) << "\n";
    return 0;
  } catch (const Error& e) {
    std::cout << cli::errorJson(e) << "\n";
    return 1;
  }
}

std::string batchLine(const std::string& line, cli::ObjectTable& objects) {
  try {
    const auto j = nlohmann::json::parse(line, nullptr, false);
    if (j.is_discarded() || !j.is_object()) {
      fail(5, "Invalid procedure call or argument: a batch line is one JSON object");
    }
    if (!j.contains("call") || !j.at("call").is_string()) {
      fail(5, "Invalid procedure call or argument: the line has no \"call\"");
    }
    const auto target = j.at("call").get<std::string>();
    Call call;
    if (j.contains("object")) {
      call.target = objects.get(j.at("object").get<std::int64_t>());
      call.member = target;
    } else {
      const auto [className, member] = splitTarget(target);
      call.target = classInstance(className);
      call.member = member;
    }
    if (j.contains("args")) {
      if (!j.at("args").is_array())
        fail(5, "Invalid procedure call or argument: \"args\" is a list");
      for (const auto& a : j.at("args")) call.args.push_back(cli::toVariant(a, objects));
    }
    if (j.contains("named")) {
      if (!j.at("named").is_object())
        fail(5, "Invalid procedure call or argument: \"named\" is an object");
      for (const auto& [name, value] : j.at("named").items()) {
        call.named.push_back({name, cli::toVariant(value, objects)});
      }
    }
    if (j.contains("let")) call.let = cli::toVariant(j.at("let"), objects);
    return run(call, objects);
  } catch (const Error& e) {
    return cli::errorJson(e);
  } catch (const std::exception& e) {
    return cli::errorJson(
        Error(5, u"Invalid procedure call or argument: " + fromUtf8(e.what()), u"orvo"));
  }
}

int commandBatch() {
  cli::ObjectTable objects;
  std::string line;
  while (std::getline(std::cin, line)) {
    std::cout << batchLine(line, objects) << "\n" << std::flush;
  }
  return 0;
}

int commandMembers(int argc, char** argv) {
  const char* kinds[] = {"", "get ", "let "};
  for (const auto& cls : automation::classes()) {
    if (argc > 2 && automation::findClass(argv[2]) != &cls) continue;
    std::cout << cls.name << (cls.global ? " (global)" : "") << "\n";
    for (const auto& m : cls.members) {
      std::cout << "  " << kinds[static_cast<int>(m.kind)] << m.resultType << " " << m.name << "(";
      for (std::size_t i = 0; i < m.params.size(); ++i) {
        const auto& p = m.params[i];
        std::cout << (i ? ", " : "")
                  << (p.direction == automation::Direction::InOut ? "inout " : "")
                  << (p.optional ? "optional " : "") << p.type << " " << p.name;
      }
      std::cout << ")\n";
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    std::fputs(kUsage, argc < 2 ? stderr : stdout);
    return argc < 2 ? 2 : 0;
  }
  const std::string verb = argv[1];
  if (verb == "call") return commandCall(argc, argv);
  if (verb == "batch") return commandBatch();
  if (verb == "members") return commandMembers(argc, argv);
  std::fprintf(stderr, "orvo: unknown command '%s'\n%s", verb.c_str(), kUsage);
  return 2;
}
