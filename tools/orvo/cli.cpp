#include "cli.hpp"

#include <algorithm>
#include <cctype>
#include <exception>
#include <optional>
#include <span>
#include <vector>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"

namespace orvo::cli {

namespace {

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
  if (cls == nullptr)
    fail(errCantCreateObject, "ActiveX component can't create object: no class " + className);
  if (!cls->global) {
    fail(errCantCreateObject, "ActiveX component can't create object: " + className +
                                  " is handed out by FactoryMethods only");
  }
  return automation::globalInstance(className);
}

std::pair<std::string, std::string> splitTarget(const std::string& target) {
  const auto dot = target.find('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == target.size()) {
    fail(errInvalidProcedureCall,
         "Invalid procedure call or argument: expected Class.Member, got \"" +
             target.substr(0, 80) + "\"");
  }
  return {target.substr(0, dot), target.substr(dot + 1)};
}

// The declared parameters of the member a call will reach, when the registry knows it.
std::span<const automation::ParamInfo> parametersOf(Object& target, const std::string& member) {
  const auto* cls = automation::findClass(target.className());
  if (cls == nullptr) return {};
  const auto* m = automation::findMember(*cls, member, automation::MemberKind::Method);
  if (m == nullptr) m = automation::findMember(*cls, member, automation::MemberKind::PropertyGet);
  return m != nullptr ? m->params : std::span<const automation::ParamInfo>();
}

const automation::ParamInfo* parameterNamed(std::span<const automation::ParamInfo> params,
                                            std::string_view name) {
  for (const auto& p : params) {
    if (p.name.size() == name.size() &&
        std::equal(p.name.begin(), p.name.end(), name.begin(), [](char a, char b) {
          return std::tolower(static_cast<unsigned char>(a)) ==
                 std::tolower(static_cast<unsigned char>(b));
        })) {
      return &p;
    }
  }
  return nullptr;
}

// The first argument the member's declared types would refuse, named: the call would raise the
// same error without saying which argument it was.
std::optional<std::pair<Error, ArgumentFault>> argumentFault(
    const Call& call, std::span<const automation::ParamInfo> params) {
  if (call.let) return std::nullopt;
  const auto check = [&](const automation::ParamInfo* p,
                         const Variant& value) -> std::optional<std::pair<Error, ArgumentFault>> {
    if (p == nullptr) return std::nullopt;
    try {
      automation::checkArgument(*p, value);
    } catch (const Error& e) {
      return std::pair(e, ArgumentFault{std::string(p->name), std::string(p->type)});
    }
    return std::nullopt;
  };
  for (std::size_t i = 0; i < call.args.size() && i < params.size(); ++i) {
    if (auto fault = check(&params[i], call.args[i])) return fault;
  }
  for (const auto& n : call.named) {
    if (auto fault = check(parameterNamed(params, n.name), n.value)) return fault;
  }
  return std::nullopt;
}

std::string run(Call call, ObjectTable& objects) {
  const automation::CallResult result =
      automation::call(*call.target, call.member, std::move(call.args), std::move(call.named),
                       std::move(call.let), u"orvo");
  std::string out = "{\"result\":";
  appendJson(out, result.result, objects);
  bool first = true;
  for (const auto& [name, value] : result.byref) {
    out += first ? ",\"byref\":{" : ",";
    first = false;
    appendQuoted(out, fromUtf8(name));
    out += ':';
    appendJson(out, value, objects);
  }
  if (!first) out += '}';
  out += '}';  // in place: a copy would hold a long answer twice
  return out;
}

Variant argumentFromText(const std::string& text, const ObjectTable& objects) {
  // A word that cannot begin a JSON value is a string without a parse: the first exception a
  // process throws costs more than the rest of a short call.
  static constexpr std::string_view kValueStarts = "{[\"-0123456789tfn";
  if (text.empty() || kValueStarts.find(text.front()) == std::string_view::npos) {
    return Variant(fromSystemBytes(text));
  }
  try {
    return parseValue(text, objects);
  } catch (const SyntaxError&) {
    return Variant(fromSystemBytes(text));  // a bare word is a string
  }
}

// What escaped the call, numbered and worded as the library reports it, as orvo's own error;
// an internal error also says what failed, for whoever reads the line.
std::string describeFailure(const std::exception& e) {
  const Error error = asError(std::current_exception());
  String description = error.description();
  if (error.number() == errInternalError) description += u": " + fromUtf8(e.what());
  return errorJson(Error(error.number(), description, u"orvo"));
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
    const auto fault = argumentFault(call, parametersOf(*call.target, call.member));
    if (fault) return errorJson(fault->first, &fault->second);
    return run(std::move(call), objects);
  } catch (const Error& e) {
    return errorJson(e);
  } catch (const std::exception& e) {
    return describeFailure(e);
  }
}

CallAnswer callLine(int argc, const char* const* argv, ObjectTable& objects) {
  try {
    if (argc < 3)
      fail(errInvalidProcedureCall,
           "Invalid procedure call or argument: orvo call Class.Member [ARG...]");
    const auto [className, member] = splitTarget(argv[2]);
    Call call{classInstance(className), member, {}, {}, std::nullopt};
    // Words are read by the type the member declares: a String parameter takes the text as
    // typed ("1.50" stays 1.50, "true" stays true); the others take JSON, or a bare word.
    const auto params = parametersOf(*call.target, call.member);
    const auto fromText = [&](const automation::ParamInfo* p, const std::string& text) {
      if (p != nullptr && p->type == "String") return Variant(fromSystemBytes(text));
      return argumentFromText(text, objects);
    };
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
        const std::string name(arg.substr(0, assign));
        call.named.push_back(
            {name, fromText(parameterNamed(params, name), std::string(arg.substr(assign + 2)))});
      } else {
        if (!call.named.empty()) {
          fail(errInvalidProcedureCall,
               "Invalid procedure call or argument: positional after named");
        }
        const std::size_t at = call.args.size();
        call.args.push_back(fromText(at < params.size() ? &params[at] : nullptr, std::string(arg)));
      }
    }
    if (const auto fault = argumentFault(call, params)) {
      return {errorJson(fault->first, &fault->second), false};
    }
    return {run(std::move(call), objects), true};
  } catch (const Error& e) {
    return {errorJson(e), false};
  } catch (const std::exception& e) {
    return {describeFailure(e), false};
  }
}

}  // namespace orvo::cli
