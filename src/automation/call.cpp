#include <algorithm>
#include <string>
#include <utility>

#include "automation/names.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/errors.hpp"

namespace orvo::automation {

namespace {

const MemberInfo* resolve(const Object& object, std::string_view member, bool let,
                          MemberKind& kind) {
  const ClassInfo* cls = findClass(object.className());
  if (cls == nullptr) return nullptr;
  kind = MemberKind::Method;
  if (let) {
    kind = MemberKind::PropertyLet;
  } else if (findMember(*cls, member, MemberKind::Method) == nullptr &&
             findMember(*cls, member, MemberKind::PropertyGet) != nullptr) {
    kind = MemberKind::PropertyGet;
  }
  return findMember(*cls, member, kind);
}

using PassedArray = std::pair<std::string_view, Variant>;

// Keeping a copy of each array argument costs nothing: copies share their elements until one
// is written, and the arguments themselves move into the call.
std::vector<PassedArray> passedArrays(const MemberInfo& member, const std::vector<Variant>& args,
                                      const std::vector<NamedArgument>& named) {
  std::vector<PassedArray> passed;
  for (std::size_t i = 0; i < args.size() && i < member.params.size(); ++i) {
    if (args[i].isArray()) passed.emplace_back(member.params[i].name, args[i]);
  }
  for (const auto& n : named) {
    if (!n.value.isArray()) continue;
    for (const auto& p : member.params) {
      if (sameName(p.name, n.name)) passed.emplace_back(p.name, n.value);
    }
  }
  return passed;
}

// An array still sharing its elements with the one passed was not written; one equal to it was
// written back unchanged. Either way the caller already has it.
bool unchangedArray(const std::vector<PassedArray>& passed, const std::string& name,
                    const Variant& after) {
  const SafeArray* array = after.array();
  if (array == nullptr) return false;
  const auto it =
      std::find_if(passed.begin(), passed.end(), [&](const auto& p) { return p.first == name; });
  return it != passed.end() &&
         (array->sharesElementsWith(*it->second.array()) || it->second == after);
}

}  // namespace

CallResult call(Object& object, std::string_view member, std::vector<Variant> args,
                std::vector<NamedArgument> named, std::optional<Variant> let,
                std::u16string_view caller) {
  MemberKind kind = MemberKind::Method;
  const MemberInfo* info = resolve(object, member, let.has_value(), kind);
  if (info == nullptr) {
    throw Error(
        runtime::errNoSuchMember,
        String(runtime::standardErrorText(runtime::errNoSuchMember)) + u": " +
            fromUtf8(std::string(object.className()) + "." + std::string(member.substr(0, 80))),
        String(caller));
  }
  // Arrays travel by reference so that they are not copied, not because they are answers: an
  // array the call left as it was is not repeated back to the caller.
  const std::vector<PassedArray> passed = passedArrays(*info, args, named);
  CallResult result = let ? invoke(object, member, {std::move(*let)}, {}, kind)
                          : invoke(object, member, std::move(args), std::move(named), kind);
  std::erase_if(result.byref, [&](const auto& entry) {
    return unchangedArray(passed, entry.first, entry.second);
  });
  return result;
}

}  // namespace orvo::automation
