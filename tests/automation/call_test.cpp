#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::automation {
namespace {

using test::show;

Variant strings(std::vector<String> items) { return Variant(SafeArray(0, std::move(items))); }

TEST(CallTest, ChoosesTheMethodThePropertyReadOrTheLet) {
  StringUtilities text;
  FileSubs files;
  const String eol = files.EOL();
  struct Case {
    const char* name;
    Object& object;
    std::string member;
    std::vector<Variant> args;
    std::optional<Variant> let;
    Variant result;
  };
  // In order: the let rows change the property the rows after them read.
  const std::vector<Case> cases = {
      {"a method", text, "EncodeQuotes", {Variant(u"it's")}, std::nullopt, Variant(u"it`s")},
      {"a property read where there is no method",
       text,
       "bannedcharextender_allowed",
       {},
       std::nullopt,
       Variant(u"allowed:")},
      {"a let assigns", files, "EOL", {}, Variant(u"|"), Variant()},
      {"a read without a let reads", files, "EOL", {}, std::nullopt, Variant(u"|")},
      {"a let does not use the arguments",
       files,
       "eol",
       {Variant(u"ignored")},
       Variant(u"#"),
       Variant()},
      {"the let's value is the one kept", files, "EOL", {}, std::nullopt, Variant(u"#")},
  };
  for (const auto& c : cases) {
    const CallResult r = call(c.object, c.member, c.args, {}, c.let, u"host");
    EXPECT_TRUE(r.result == c.result) << c.name;
    EXPECT_TRUE(r.byref.empty()) << c.name;
  }
  files.EOL(eol);
}

TEST(CallTest, AMissingMemberIsReportedWithClassMemberAndCaller) {
  MathsUtilities maths;
  const std::string longName(100, 'x');
  struct Case {
    const char* name;
    std::string member;
    std::optional<Variant> let;
    String description;
  };
  const String prefix = u"Object doesn't support this property or method: MathsUtilities.";
  const std::vector<Case> cases = {
      {"no such name", "NoSuchThing", std::nullopt, prefix + u"NoSuchThing"},
      {"a long name is cut at 80 bytes", longName, std::nullopt, prefix + String(80, u'x')},
      {"a method cannot be assigned", "RoundUp", Variant(1.0), prefix + u"RoundUp"},
  };
  for (const auto& c : cases) {
    const Error e = test::errorOf([&] { (void)call(maths, c.member, {}, {}, c.let, u"host"); });
    EXPECT_EQ(e.number(), 438) << c.name;
    EXPECT_EQ(e.description(), c.description) << c.name << ": " << show(e.description());
    EXPECT_EQ(e.source(), u"host") << c.name;
  }
}

TEST(CallTest, ByReferenceResultsLeaveOutOnlyTheArraysTheCallDidNotChange) {
  StringUtilities text;
  MathsUtilities maths;
  FileSubs files;
  const Variant numbers = Variant::array({Variant(1.0), Variant(5.0), Variant(5.0)});
  struct Case {
    const char* name;
    Object& object;
    std::string member;
    std::vector<Variant> args;
    std::vector<NamedArgument> named;
    std::vector<std::pair<std::string, Variant>> byref;
  };
  const std::vector<Case> cases = {
      {"an array only read",
       maths,
       "IsLongInArray",
       {Variant(5.0), numbers},
       {},
       {{"Index", Variant(std::int32_t{1})}}},
      {"an array only read, named in another case",
       maths,
       "IsLongInArray",
       {Variant(5.0)},
       {{"VARRAY", numbers}},
       {{"Index", Variant(std::int32_t{1})}}},
      {"an array read by a search that fails",
       maths,
       "IsLongInArray",
       {Variant(7.0), numbers},
       {},
       {{"Index", Variant(std::int32_t{0})}}},
      {"an array the call replaces",
       files,
       "TextToLines",
       {Variant(u"a\r\nb"), strings({u"x"})},
       {},
       {{"text", Variant(u"a\nb")},
        {"Lines", strings({u"a", u"b"})},
        {"NumLines", Variant(std::int32_t{2})}}},
      {"an array written back equal",
       files,
       "TextToLines",
       {Variant(u"a"), strings({u"a"})},
       {},
       {{"text", Variant(u"a")}, {"NumLines", Variant(std::int32_t{1})}}},
      {"a scalar left as it was",
       text,
       "CorrectDLLStringForDBCS",
       {Variant(u"abc")},
       {},
       {{"ToCorrect", Variant(u"abc")}}},
      {"omitted in/out parameters",
       text,
       "SplitPath",
       {Variant(u"C:\\d\\f.txt")},
       {},
       {{"Drive", Variant(u"C:")},
        {"Dir", Variant(u"\\d\\")},
        {"Name", Variant(u"f")},
        {"Extension", Variant(u".txt")}}},
  };
  for (const auto& c : cases) {
    const CallResult r = call(c.object, c.member, c.args, c.named, std::nullopt, u"host");
    ASSERT_EQ(r.byref.size(), c.byref.size()) << c.name;
    for (std::size_t i = 0; i < c.byref.size(); ++i) {
      EXPECT_EQ(r.byref[i].first, c.byref[i].first) << c.name;
      EXPECT_TRUE(r.byref[i].second == c.byref[i].second) << c.name << ": " << r.byref[i].first;
    }
  }
}

}  // namespace
}  // namespace orvo::automation
