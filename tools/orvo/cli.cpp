#include "cli.hpp"

#include <algorithm>
#include <cctype>
#include <exception>
#include <new>
#include <optional>
#include <vector>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"

namespace orvo::cli {

namespace {

using automation::MemberKind;

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
    fail(5, "Invalid procedure call or argument: expected Class.Member, got \"" +
                target.substr(0, 80) + "\"");
  }
  return {target.substr(0, dot), target.substr(dot + 1)};
}

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) ==
                  std::toupper(static_cast<unsigned char>(y));
         });
}

std::string run(Call call, ObjectTable& objects) {
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
                  std::string(call.target->className()) + "." + call.member.substr(0, 80));
  }
  // Arrays travel by reference so that they are not copied, not because they are answers: an
  // array the call left as it was is not repeated back. Keeping a copy of each costs nothing
  // (copies share their elements until one is written), and the arguments themselves move
  // into the call.
  std::vector<std::pair<std::string_view, Variant>> passedArrays;
  for (std::size_t i = 0; i < call.args.size() && i < member->params.size(); ++i) {
    if (call.args[i].isArray()) passedArrays.emplace_back(member->params[i].name, call.args[i]);
  }
  for (const auto& n : call.named) {
    if (!n.value.isArray()) continue;
    for (const auto& p : member->params) {
      if (sameName(p.name, n.name)) passedArrays.emplace_back(p.name, n.value);
    }
  }
  const automation::CallResult result =
      call.let ? automation::invoke(*call.target, call.member, {std::move(*call.let)}, {}, kind)
               : automation::invoke(*call.target, call.member, std::move(call.args),
                                    std::move(call.named), kind);
  std::string out = "{\"result\":";
  appendJson(out, result.result, objects);
  bool first = true;
  for (const auto& entry : result.byref) {
    const std::string& name = entry.first;
    const Variant& value = entry.second;
    if (const SafeArray* after = value.array()) {
      const auto passed = std::find_if(passedArrays.begin(), passedArrays.end(),
                                       [&](const auto& p) { return p.first == name; });
      if (passed != passedArrays.end() &&
          (after->sharesElementsWith(*passed->second.array()) || passed->second == value)) {
        continue;
      }
    }
    out += first ? ",\"byref\":{" : ",";
    first = false;
    appendQuoted(out, fromUtf8(name));
    out += ':';
    appendJson(out, value, objects);
  }
  if (!first) out += '}';
  return out + "}";
}

Variant argumentFromText(const std::string& text, const ObjectTable& objects) {
  try {
    return parseValue(text, objects);
  } catch (const SyntaxError&) {
    return Variant(fromUtf8(text));  // a bare word is a string
  }
}

std::string describeFailure(const std::exception& e) {
  if (dynamic_cast<const std::bad_alloc*>(&e) != nullptr) {
    return errorJson(Error(7, u"Out of memory", u"orvo"));
  }
  return errorJson(Error(51, u"Internal error: " + fromUtf8(e.what()), u"orvo"));
}

}  // namespace

std::string batchLine(std::string_view line, ObjectTable& objects) {
  try {
    BatchRequest request = parseBatchLine(line, objects);
    Call call;
    const std::string target = toUtf8(*request.call);
    if (request.object) {
      call.target = objects.get(*request.object);
      call.member = target;
    } else {
      const auto [className, member] = splitTarget(target);
      call.target = classInstance(className);
      call.member = member;
    }
    call.args = std::move(request.args);
    call.named = std::move(request.named);
    call.let = std::move(request.let);
    return run(std::move(call), objects);
  } catch (const Error& e) {
    return errorJson(e);
  } catch (const std::exception& e) {
    return describeFailure(e);
  }
}

CallAnswer callLine(int argc, const char* const* argv, ObjectTable& objects) {
  try {
    if (argc < 3) fail(5, "Invalid procedure call or argument: orvo call Class.Member [ARG...]");
    const auto [className, member] = splitTarget(argv[2]);
    Call call{classInstance(className), member, {}, {}, std::nullopt};
    for (int i = 3; i < argc; ++i) {
      const std::string_view arg = argv[i];
      // Name:=value names a parameter (a name is a letter or _, then letters, digits, _).
      const auto assign = arg.find(":=");
      const bool named =
          assign != std::string_view::npos && assign > 0 &&
          (std::isalpha(static_cast<unsigned char>(arg[0])) != 0 || arg[0] == '_') &&
          std::all_of(arg.begin(), arg.begin() + static_cast<std::ptrdiff_t>(assign), [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
          });
      if (named) {
        call.named.push_back({std::string(arg.substr(0, assign)),
                              argumentFromText(std::string(arg.substr(assign + 2)), objects)});
      } else {
        if (!call.named.empty()) {
          fail(5, "Invalid procedure call or argument: positional after named");
        }
        call.args.push_back(argumentFromText(std::string(arg), objects));
      }
    }
    return {run(std::move(call), objects), true};
  } catch (const Error& e) {
    return {errorJson(e), false};
  } catch (const std::exception& e) {
    return {describeFailure(e), false};
  }
}

}  // namespace orvo::cli
