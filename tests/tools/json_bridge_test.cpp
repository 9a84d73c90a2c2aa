#include "json_bridge.hpp"

#include <gtest/gtest.h>

#include <string>

#include "cli.hpp"
#include "support/test_support.hpp"

namespace orvo::cli {
namespace {

using test::errorOf;

std::string line(const std::string& call, const std::string& args) {
  return R"({"call":")" + call + R"(","args":)" + args + "}";
}

// The number in an answer line's error, 0 for a result.
int answerNumber(const std::string& answer) {
  const auto at = answer.find(R"({"error":{"number":)");
  return at == std::string::npos ? 0 : std::stoi(answer.substr(at + 19));
}

TEST(JsonBridgeTest, HostileLinesGetOneNumberedAnswerAndTheBatchGoesOn) {
  const std::string deepArrays = std::string(100000, '[') + std::string(100000, ']');
  std::string deepObjects;
  for (int i = 0; i < 100000; ++i) deepObjects += R"({"a":)";
  deepObjects += "1" + std::string(100000, '}');
  struct Case {
    const char* name;
    std::string line;
    int number;
    const char* mentions;  // a piece of the description
  };
  const Case cases[] = {
      {"arrays nested beyond the limit", line("MathsUtilities.RoundUp", "[" + deepArrays + "]"), 28,
       "Out of stack space"},
      {"objects nested beyond the limit", line("MathsUtilities.RoundUp", "[" + deepObjects + "]"),
       28, "nest at most 1000"},
      {"one level under the limit is fine",
       line("StringUtilities.IsArrayInitialised",
            "[" + std::string(998, '[') + std::string(998, ']') + "]"),
       0, "true"},
      {"currency above the maximum",
       line("StringUtilities.ValDbl", R"([{"currency":"922337203685477.5808"}])"), 6, "Overflow"},
      {"currency below the minimum",
       line("StringUtilities.ValDbl", R"([{"currency":"-922337203685477.5809"}])"), 6, "Overflow"},
      {"the valid minimum",
       line("StringUtilities.ValDbl", R"([{"currency":"-922337203685477.5808"}])"), 0,
       "-922337203685477.6"},
      {"a huge currency integer part",
       line("StringUtilities.ValDbl", R"([{"currency":"99999999999999999999999"}])"), 6,
       "Overflow"},
      {"upper bound beyond a Long",
       line("MathsUtilities.IsLongInArray", R"([2,{"lbound":2147483647,"items":[1,2]}])"), 6,
       "upper bound"},
      {"upper bound below a Long",
       line("StringUtilities.IsArrayInitialised_Fast", R"([{"lbound":-2147483648,"items":[]}])"), 6,
       "upper bound"},
      {"the lowest bound with one element",
       line("StringUtilities.IsArrayInitialised_Fast", R"([{"lbound":-2147483648,"items":[0]}])"),
       0, "true"},
      {"lower bound 1e20",
       line("StringUtilities.IsArrayInitialised", R"([{"lbound":1e20,"items":[]}])"), 6,
       "lower bound"},
      {"lower bound 1.5",
       line("StringUtilities.IsArrayInitialised", R"([{"lbound":1.5,"items":[1]}])"), 6,
       "lower bound"},
      {"lower bound as text",
       line("StringUtilities.IsArrayInitialised", R"([{"lbound":"1","items":[1]}])"), 5, "lbound"},
      {"items that are text",
       line("StringUtilities.IsArrayInitialised", R"([{"lbound":0,"items":"x"}])"), 5,
       "\\\"items\\\" is a list or null"},
      {"items that are a tagged array",
       line("StringUtilities.IsArrayInitialised", R"([{"items":{"lbound":1,"items":[1]}}])"), 5,
       "\\\"items\\\" is a list or null"},
      {"handle 1e30", R"({"object":1e30,"call":"X"})", 5, "got 1e30"},
      {"handle as text", R"({"object":"1","call":"X"})", 5, R"(got \"1\")"},
      {"unknown handle", R"({"object":77,"call":"X"})", 5, "no object with handle 77"},
      {"not JSON", "not json", 5, "starts with: not json"},
      {"a blank line", "", 5, "blank"},
      {"a missing comma", line("MathsUtilities.RoundUp", R"(["a" "b"])"), 5, "at byte 45"},
      {"truncated", R"({"call":"MathsUtilities.RoundUp","args":[1)", 5, "at byte 42"},
      {"trailing text", line("MathsUtilities.RoundUp", "[1]") + " x", 5, "after the JSON value"},
      {"invalid UTF-8", line("StringUtilities.LenTrim", "[\"a\xC3(\"]"), 5, "not UTF-8"},
      {"an encoded surrogate", line("StringUtilities.LenTrim", "[\"\xED\xA0\x80\"]"), 5,
       "not UTF-8"},
      {"a leading zero", line("MathsUtilities.RoundUp", "[01]"), 5, "start with 0"},
      {"an unknown object form", line("MathsUtilities.RoundUp", R"([{"what":1}])"), 5,
       "unknown JSON object form"},
      {"a long unknown object form is quoted short",
       line("MathsUtilities.RoundUp", R"([{"what":")" + std::string(5000, 'x') + R"("}])"), 5,
       "xxx..."},
      {"no call", R"({"args":[]})", 5, R"(no \"call\")"},
      {"args not a list", R"({"call":"MathsUtilities.RoundUp","args":1})", 5,
       R"(\"args\" is a list)"},
      {"a bad date", line("StringUtilities.ValDbl", R"([{"date":"2026-13-01"}])"), 5, "a date is"},
      {"an overlong date field", line("StringUtilities.ValDbl", R"([{"date":"99999999999-1-1"}])"),
       5, "a date is"},
      {"infinity reads back", line("MathsUtilities.Log10", "[1e999]"), 6, "Overflow"},
  };
  ObjectTable objects;
  for (const auto& c : cases) {
    const std::string answer = batchLine(c.line, objects);
    EXPECT_EQ(answerNumber(answer), c.number) << c.name << ": " << answer.substr(0, 300);
    EXPECT_NE(answer.find(c.mentions), std::string::npos)
        << c.name << ": " << answer.substr(0, 300);
    EXPECT_LT(answer.size(), 400U) << c.name << ": messages quote a short prefix only";
    EXPECT_EQ(answer.find('\n'), std::string::npos) << c.name;
  }
}

TEST(JsonBridgeTest, EveryStringWrittenReadsBackUnchanged) {
  const String texts[] = {
      String(1, u'\xD800'),    String(1, u'\xDFFF'), u"a\U0001F600b",
      String(u"\xDE00\xD83D"), String(u"x\0y", 3),   u"\"\\/\b\f\n\r\t\x01\x1f",
      u"caf\u00e9 \u3042",     String(1, u'\xFFFF'), u"",
  };
  ObjectTable objects;
  for (const String& text : texts) {
    std::string json;
    appendJson(json, Variant(text), objects);
    const Variant back = parseValue(json, objects);
    ASSERT_NE(back.get<String>(), nullptr) << json;
    EXPECT_EQ(*back.get<String>(), text) << json;
  }
  // A lone surrogate passes through a whole call and out again.
  const std::string answer =
      batchLine(R"({"call":"StringUtilities.EncodeQuotes","args":["\ud800x\uDE00'"]})", objects);
  EXPECT_EQ(answer, R"({"result":"\uD800x\uDE00`"})");
}

TEST(JsonBridgeTest, ValuesRoundTripInTheirTaggedForms) {
  const char* forms[] = {
      R"(null)",
      R"({"null":true})",
      R"(true)",
      R"(-2147483648)",
      R"(2147483648)",
      R"(0.1)",
      R"(1e999)",
      R"({"currency":"-922337203685477.5808"})",
      R"({"currency":"922337203685477.5807"})",
      R"({"date":"2026-11-23T09:15:20"})",
      R"({"date":"1899-12-29T06:00:00"})",
      R"({"bytes":"00ff7f","lbound":-3})",
      R"({"lbound":0,"items":null})",
      R"({"lbound":-2147483648,"items":[1]})",
      R"([[1,"a"],{"lbound":5,"items":[]}])",
      R"({"errorValue":-2147352572})",
      R"({"object":null})",
  };
  ObjectTable objects;
  for (const char* form : forms) {
    std::string json;
    appendJson(json, parseValue(form, objects), objects);
    EXPECT_EQ(json, form);
  }
}

TEST(JsonBridgeTest, ArgumentsOfOrvoCall) {
  ObjectTable objects;
  struct Case {
    std::vector<const char*> argv;
    bool ok;
    const char* answer;
  };
  const Case cases[] = {
      {{"orvo", "call", "StringUtilities.EncodeQuotes", "it's"}, true, R"({"result":"it`s"})"},
      {{"orvo", "call", "StringUtilities.EncodeQuotes", "[1"}, true, R"({"result":"[1"})"},
      {{"orvo", "call", "StringUtilities.EncodeQuotes", R"("\ud83d")"},
       true,
       R"({"result":"\uD83D"})"},
      {{"orvo", "call", "MathsUtilities.IsLongInArray", "5", "[1,5]", "Forwards:=false"},
       true,
       R"({"result":false,"byref":{"Index":0}})"},
      {{"orvo", "call", "MathsUtilities.RoundUp", "2"}, true, R"({"result":2})"},
      {{"orvo", "call", "StringUtilities.SplitPath", "a:=b"}, false, nullptr},
  };
  for (const auto& c : cases) {
    const CallAnswer answer = callLine(static_cast<int>(c.argv.size()), c.argv.data(), objects);
    EXPECT_EQ(answer.ok, c.ok) << answer.line;
    if (c.answer != nullptr) {
      EXPECT_EQ(answer.line, c.answer);
    }
  }
  // Nesting beyond the limit is an error here too, not a string and not a crash.
  const std::string deep = std::string(5000, '[') + std::string(5000, ']');
  const char* argv[] = {"orvo", "call", "MathsUtilities.RoundUp", deep.c_str()};
  EXPECT_EQ(answerNumber(callLine(4, argv, objects).line), 28);
}

TEST(JsonBridgeTest, ArraysComeBackOnlyWhenTheCallChangedThem) {
  ObjectTable objects;
  // The array is left as it was: not repeated; Index is an answer.
  EXPECT_EQ(batchLine(line("MathsUtilities.IsLongInArray", "[5,[1,5]]"), objects),
            R"({"result":true,"byref":{"Index":1}})");
  EXPECT_EQ(
      batchLine(R"({"call":"MathsUtilities.IsLongInArray","args":[5],"named":{"vArray":[5]}})",
                objects),
      R"({"result":true,"byref":{"Index":0}})");
}

}  // namespace
}  // namespace orvo::cli
