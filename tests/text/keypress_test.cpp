#include "text/keypress.hpp"

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "orvogeneric/desktop.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

class KeyboardUi final : public UserInterface {
 public:
  MsgBoxResult messageBox(std::u16string_view, std::u16string_view, std::int32_t) override {
    return vbOK;
  }
  void beep() override { ++beeps; }
  int beeps = 0;
};

class Keyboard final : public Desktop {
 public:
  bool isKeyDown(std::int32_t key) override { return key == 17 && control; }
  bool control = false;
};

class KeyPress : public ::testing::Test {
 protected:
  void SetUp() override {
    previous_ = setUserInterface(ui_);
    previousDesktop_ = setDesktop(keyboard_);
  }
  void TearDown() override {
    setUserInterface(previous_);
    setDesktop(previousDesktop_);
  }
  std::shared_ptr<KeyboardUi> ui_ = std::make_shared<KeyboardUi>();
  std::shared_ptr<Keyboard> keyboard_ = std::make_shared<Keyboard>();
  std::shared_ptr<UserInterface> previous_;
  std::shared_ptr<Desktop> previousDesktop_;
  test::ScopedLocale english_{"en_US.UTF-8"};
};

TEST_F(KeyPress, WholeTexts) {
  for (const char16_t* good : {u"", u"-", u"+", u"1", u"1.5", u"-1.5e-3", u"1E+5", u".5", u"1e"}) {
    EXPECT_EQ(ValidRString(good), VBool::True) << test::show(good);
  }
  for (const char16_t* bad : {u"1.2.3", u"e5", u"--1", u"1-", u"1e5e", u"1e.5", u" 1", u"1,5"}) {
    EXPECT_EQ(ValidRString(bad), VBool::False) << test::show(bad);
  }
  EXPECT_EQ(ui_->beeps, 0) << "a whole text is judged silently";
  const test::ScopedLocale german("de_DE.UTF-8");
  EXPECT_EQ(ValidRString(u"1.5"), VBool::False);
  EXPECT_EQ(ValidRString(u"1,5"), VBool::True);
}

TEST_F(KeyPress, SingleKeystrokes) {
  struct Case {
    char16_t key;
    const char16_t* selText;
    std::int32_t selStart;
    std::int32_t selLen;
    const char16_t* text;
    bool accepted;
  };
  const Case cases[] = {
      {u'-', u"", 0, 0, u"5", true},      {u'5', u"", 0, 0, u"-5", false},
      {u'-', u"", 1, 0, u"1", false},     {u'-', u"", 2, 0, u"1e", true},
      {u'3', u"-", 0, 1, u"-5", true},  // the selection goes before the tests
      {u'7', u"e", 1, 1, u"1e-5", false}, {u'E', u"e", 1, 1, u"1e-5", true},
      {u'e', u"", 1, 0, u"-", false},  // no exponent after a bare sign
      {u'e', u"", 0, 0, u"", false},      {u'.', u"", 2, 0, u"1e", false},
      {u'\b', u"", 1, 0, u"1", true},     {u'\b', u"", 0, 0, u"", true},
      {u'x', u"", 1, 0, u"1", false},
  };
  for (const auto& c : cases) {
    std::int16_t key = static_cast<std::int16_t>(c.key);
    ValidRs_subWorker(key, c.selText, c.selStart, c.selLen, c.text, VBool::False);
    EXPECT_EQ(key != 0, c.accepted)
        << static_cast<char>(c.key) << " at " << c.selStart << " of " << test::show(c.text);
  }
  const int beeps = ui_->beeps;
  EXPECT_EQ(beeps, 7) << "every refused key but none of the accepted ones beeps";
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
    const char separator = std::string(localeName).starts_with("de") ? ',' : '.';
    const std::regex grammar(std::string(R"(^([+-]?)(\d*)()") + (separator == '.' ? "\\." : ",") +
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
