#include "text/keypress.hpp"

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "orvogeneric/desktop.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

class Keyboard final : public Desktop {
 public:
  bool isKeyDown(std::int32_t key) override { return key == 17 && control; }
  bool control = false;
};

class KeyPress : public ::testing::Test {
 protected:
  void SetUp() override { previousDesktop_ = setDesktop(keyboard_); }
  void TearDown() override { setDesktop(previousDesktop_); }
  test::ScopedRecordingUserInterface ui_;
  std::shared_ptr<Keyboard> keyboard_ = std::make_shared<Keyboard>();
  std::shared_ptr<Desktop> previousDesktop_;
  test::ScopedLocale english_{"en_US.UTF-8"};
};

TEST_F(KeyPress, WholeTextsAndSingleKeystrokes) {
  for (const auto& row : test::readTestData("text/keypress.tsv", 7)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const test::ScopedLocale locale(toUtf8(f[0]).c_str());
    const bool accepted = f[6] == u"T";
    const int beeps = ui_->beeps;
    if (f[1] == u"whole") {
      EXPECT_EQ(ValidRString(f[5]) == VBool::True, accepted);
      EXPECT_EQ(ui_->beeps, beeps) << "a whole text is judged silently";
      continue;
    }
    auto key = static_cast<std::int16_t>(f[1].at(0));
    const auto selStart = static_cast<std::int32_t>(test::integerOf(f[3]));
    ValidRs_subWorker(key, f[2], selStart, std::int32_t(test::integerOf(f[4])), f[5], VBool::False);
    EXPECT_EQ(key != 0, accepted);
    EXPECT_EQ(ui_->beeps - beeps, accepted ? 0 : 1) << "every refused key beeps, no accepted one";
  }
  const int beeps = ui_->beeps;
  std::int16_t blank = 32;
  ValidRs_subWorker(blank, u"", 1, 0, u"1", VBool::False);
  EXPECT_EQ(blank, 0);
  std::int16_t x = 'x';
  ValidRs_subWorker(x, u"", 1, 0, u"1", VBool::True);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(ui_->beeps, beeps) << "a blank and a suppressed key are silent";
}

TEST_F(KeyPress, BannedCharacters) {
  std::int16_t backslash = '\\';
  ValidStr_worker(backslash, u"\\/:", VBool::False);
  EXPECT_EQ(backslash, 0);
  std::int16_t a = 'a';
  ValidStr_worker(a, u"\\/:", VBool::False);
  EXPECT_EQ(a, 'a');
  EXPECT_EQ(ui_->beeps, 1);
  keyboard_->control = true;
  backslash = '\\';
  ValidStr_worker(backslash, u"\\/:", VBool::False);
  EXPECT_EQ(backslash, '\\') << "shortcut keys pass while Control is held";
}

// The rules, replayed over a whole text, accept exactly the beginnings of a real number: an
// optional sign, digits with at most one separator, then an exponent letter after a mantissa
// that is more than a sign, with an optional sign and digits. An independent statement of that
// grammar must agree on every text.
TEST_F(KeyPress, WholeTextsAreThePrefixesOfARealNumber) {
  std::mt19937 random(20261123);
  for (const char* localeName : {"en_US.UTF-8", "de_DE.UTF-8"}) {
    const test::ScopedLocale locale(localeName);
    const bool comma = std::string(localeName).starts_with("de");
    const std::regex grammar(std::string(R"(^([+-]?)(\d*)()") + (comma ? "," : "\\.") +
                             R"(\d*)?([eE][+-]?\d*)?$)");
    const std::string alphabet = "0159.,eE+- x";
    std::uniform_int_distribution<int> length(0, 7);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    int accepted = 0;
    for (int n = 0; n < 20000; ++n) {
      std::string s;
      for (int i = length(random); i > 0; --i) s += alphabet[pick(random)];
      std::smatch m;
      bool expected = std::regex_match(s, m, grammar);
      if (expected && m[4].matched && m[2].length() + m[3].length() == 0) expected = false;
      const bool got = ValidRString(fromUtf8(s)) == VBool::True;
      ASSERT_EQ(got, expected) << "'" << s << "' under " << localeName;
      accepted += got ? 1 : 0;
    }
    EXPECT_GT(accepted, 500) << "the sample reaches valid texts too";
  }
}

}  // namespace
}  // namespace orvo::text
