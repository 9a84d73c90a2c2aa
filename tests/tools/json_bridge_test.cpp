#include "json_bridge.hpp"

#include <gtest/gtest.h>

#include <string>

#include "cli.hpp"
#include "support/test_support.hpp"

namespace orvo::cli {
namespace {

// The number in an answer line's error, 0 for a result.
int answerNumber(const std::string& answer) {
  const auto at = answer.find(R"({"error":{"number":)");
  return at == std::string::npos ? 0 : std::stoi(answer.substr(at + 19));
}

TEST(JsonBridgeTest, HostileLinesGetOneNumberedAnswerAndTheBatchGoesOn) {
  std::string deepObjects;
  for (int i = 0; i < 100000; ++i) deepObjects += R"({"a":)";
  const std::pair<std::string, std::string> stand[] = {
      {"{deep arrays}", std::string(100000, '[') + std::string(100000, ']')},
      {"{deep objects}", deepObjects + "1" + std::string(100000, '}')},
      {"{998 arrays}", std::string(998, '[') + std::string(998, ']')},
      {"{5000 x}", std::string(5000, 'x')}};
  ObjectTable objects;
  for (const auto& row : test::readTestData("tools/hostile_lines.tsv", 4)) {
    std::string text = test::bytesOf(row.fields[1]);
    for (const auto& [name, value] : stand) {
      if (const auto at = text.find(name); at != std::string::npos)
        text.replace(at, name.size(), value);
    }
    const std::string answer = batchLine(text, objects);
    SCOPED_TRACE("data line " + std::to_string(row.line) + ": " + answer.substr(0, 300));
    EXPECT_EQ(answerNumber(answer), test::integerOf(row.fields[2]));
    EXPECT_NE(answer.find(test::bytesOf(row.fields[3])), std::string::npos);
    EXPECT_LT(answer.size(), 400U) << "messages quote a short prefix only";
    EXPECT_EQ(answer.find('\n'), std::string::npos);
  }
}

TEST(JsonBridgeTest, ValuesAndStringsReadBackUnchanged) {
  ObjectTable objects;
  for (const auto& row : test::readTestData("tools/json_values.tsv", 2)) {
    std::string json;
    if (row.fields[0] == u"form") {
      appendJson(json, parseValue(toUtf8(row.fields[1]), objects), objects);
      EXPECT_EQ(fromUtf8(json), row.fields[1]) << "data line " << row.line;
      continue;
    }
    appendJson(json, Variant(row.fields[1]), objects);
    const Variant back = parseValue(json, objects);
    ASSERT_NE(back.get<String>(), nullptr) << "data line " << row.line << ": " << json;
    EXPECT_EQ(*back.get<String>(), row.fields[1]) << "data line " << row.line << ": " << json;
  }
  // A lone surrogate passes through a whole call and out again.
  const std::string answer =
      batchLine(R"({"call":"StringUtilities.EncodeQuotes","args":["\ud800x\uDE00'"]})", objects);
  EXPECT_EQ(answer, R"({"result":"\uD800x\uDE00`"})");
}

TEST(JsonBridgeTest, ArgumentsOfOrvoCall) {
  ObjectTable objects;
  for (const auto& row : test::readTestData("tools/orvo_call.tsv", 3)) {
    std::vector<std::string> args = {"orvo", "call"};
    for (const String& arg : test::split(row.fields[0], u'|')) args.push_back(toUtf8(arg));
    std::vector<const char*> argv;
    for (const auto& arg : args) argv.push_back(arg.c_str());
    const CallAnswer answer = callLine(static_cast<int>(argv.size()), argv.data(), objects);
    EXPECT_EQ(answer.ok, row.fields[1] == u"T") << "data line " << row.line << ": " << answer.line;
    if (!test::isNone(row.fields[2])) {
      EXPECT_EQ(fromUtf8(answer.line), row.fields[2]) << "data line " << row.line;
    }
  }
  // Nesting beyond the limit is an error here too, not a string and not a crash.
  const std::string deep = std::string(5000, '[') + std::string(5000, ']');
  const char* argv[] = {"orvo", "call", "MathsUtilities.RoundUp", deep.c_str()};
  EXPECT_EQ(answerNumber(callLine(4, argv, objects).line), 28);
}

TEST(JsonBridgeTest, ArraysComeBackOnlyWhenTheCallChangedThem) {
  ObjectTable objects;
  // The array is left as it was: not repeated; Index is an answer when it is asked for.
  EXPECT_EQ(batchLine(R"({"call":"MathsUtilities.IsLongInArray","args":[5,[1,5],0]})", objects),
            R"({"result":true,"byref":{"Index":1}})");
  EXPECT_EQ(batchLine(R"({"call":"MathsUtilities.IsLongInArray","args":[5,[1,5]]})", objects),
            R"({"result":true})");
  EXPECT_EQ(batchLine(R"({"call":"MathsUtilities.IsLongInArray","args":[5],)"
                      R"("named":{"vArray":[5],"Index":0}})",
                      objects),
            R"({"result":true,"byref":{"Index":0}})");
}

}  // namespace
}  // namespace orvo::cli
