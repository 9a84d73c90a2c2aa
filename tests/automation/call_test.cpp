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
  const auto result = [](Object& object, std::string member, std::vector<Variant> args,
                         std::optional<Variant> let = std::nullopt) {
    const CallResult r = call(object, member, std::move(args), {}, std::move(let), u"host");
    EXPECT_TRUE(r.byref.empty()) << member;
    return r.result;
  };
  EXPECT_TRUE(result(text, "EncodeQuotes", {Variant(u"it's")}) == Variant(u"it`s")) << "a method";
  EXPECT_TRUE(result(text, "bannedcharextender_allowed", {}) == Variant(u"allowed:"))
      << "a property read where there is no method";
  EXPECT_TRUE(result(files, "EOL", {}, Variant(u"|")) == Variant()) << "a let assigns";
  EXPECT_TRUE(result(files, "EOL", {}) == Variant(u"|")) << "a read without a let reads";
  EXPECT_TRUE(result(files, "eol", {Variant(u"ignored")}, Variant(u"#")) == Variant())
      << "a let does not use the arguments";
  EXPECT_TRUE(result(files, "EOL", {}) == Variant(u"#")) << "the let's value is the one kept";
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
  const Variant five(5.0);
  using Byref = std::vector<std::pair<std::string, Variant>>;
  const auto byref = [](Object& object, std::string member, std::vector<Variant> args,
                        std::vector<NamedArgument> named = {}) {
    return call(object, member, std::move(args), std::move(named), std::nullopt, u"host").byref;
  };
  const auto index = [](std::int32_t i) { return Byref{{"Index", Variant(i)}}; };
  const auto lines = [](std::int32_t n) { return std::pair{std::string("NumLines"), Variant(n)}; };
  const NamedArgument askIndex{"Index", Variant(0)};
  const NamedArgument askLines{"NumLines", Variant(0)};
  // An array only read, named in another case, or read by a search that fails.
  EXPECT_EQ(byref(maths, "IsLongInArray", {five, numbers}, {askIndex}), index(1));
  EXPECT_EQ(byref(maths, "IsLongInArray", {five}, {{"VARRAY", numbers}, askIndex}), index(1));
  EXPECT_EQ(byref(maths, "IsLongInArray", {Variant(7.0), numbers}, {askIndex}), index(0));
  // An array the call replaces, and one written back equal.
  EXPECT_EQ(byref(files, "TextToLines", {Variant(u"a\r\nb"), strings({u"x"})}, {askLines}),
            (Byref{{"text", Variant(u"a\nb")}, {"Lines", strings({u"a", u"b"})}, lines(2)}));
  EXPECT_EQ(byref(files, "TextToLines", {Variant(u"a"), strings({u"a"})}, {askLines}),
            (Byref{{"text", Variant(u"a")}, lines(1)}));
  // A scalar left as it was, and omitted in/out parameters.
  EXPECT_EQ(byref(text, "CorrectDLLStringForDBCS", {Variant(u"abc")}),
            (Byref{{"ToCorrect", Variant(u"abc")}}));
  // Optional answers come back when asked for, and only then.
  EXPECT_EQ(byref(maths, "IsLongInArray", {five, numbers}), Byref{});
  EXPECT_EQ(byref(text, "SplitPath", {Variant(u"C:\\d\\f.txt")}), Byref{});
  EXPECT_EQ(byref(text, "SplitPath", {Variant(u"C:\\d\\f.txt")},
                  {{"Drive", Variant(u"")},
                   {"Dir", Variant(u"")},
                   {"Name", Variant(u"")},
                   {"Extension", Variant(u"")}}),
            (Byref{{"Drive", Variant(u"C:")},
                   {"Dir", Variant(u"\\d\\")},
                   {"Name", Variant(u"f")},
                   {"Extension", Variant(u".txt")}}));
}

}  // namespace
}  // namespace orvo::automation
