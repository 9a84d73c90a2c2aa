#include "runtime/strings.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "support/test_support.hpp"

namespace orvo::runtime {
namespace {

using Args = std::vector<String>;

std::int32_t count(const String& field) {
  return static_cast<std::int32_t>(test::integerOf(field));
}

String bracketed(const std::vector<String>& parts) {
  String out;
  for (const String& part : parts) out += u"[" + part + u"]";
  return out;
}

TEST(StringsRuntimeTest, FunctionsOfTheTable) {
  const std::map<String, std::function<Variant(const Args&)>> calls = {
      {u"Trim", [](const Args& a) { return Variant(Trim(a[0])); }},
      {u"trimView", [](const Args& a) { return Variant(String(trimView(a[0]))); }},
      {u"LTrim", [](const Args& a) { return Variant(LTrim(a[0])); }},
      {u"RTrim", [](const Args& a) { return Variant(RTrim(a[0])); }},
      {u"UCase", [](const Args& a) { return Variant(UCase(a[0])); }},
      {u"LCase", [](const Args& a) { return Variant(LCase(a[0])); }},
      {u"InStr", [](const Args& a) { return Variant(InStr(count(a[0]), a[1], a[2])); }},
      {u"InStrRev", [](const Args& a) { return Variant(InStrRev(a[0], a[1])); }},
      {u"Replace", [](const Args& a) { return Variant(Replace(a[0], a[1], a[2])); }},
      {u"Split", [](const Args& a) { return Variant(bracketed(Split(a[0], a[1]))); }},
      {u"Left", [](const Args& a) { return Variant(Left(a[0], count(a[1]))); }},
      {u"Right", [](const Args& a) { return Variant(Right(a[0], count(a[1]))); }},
      {u"Mid",
       [](const Args& a) {
         return Variant(a[2].empty() ? Mid(a[0], count(a[1]))
                                     : Mid(a[0], count(a[1]), count(a[2])));
       }},
  };
  for (const auto& row : test::readTestData("runtime/strings.tsv", 5)) {
    const Args& f = row.fields;
    test::expectCall(row, f[4], [&] { return calls.at(f[0])({f[1], f[2], f[3]}); });
  }
}

}  // namespace
}  // namespace orvo::runtime
