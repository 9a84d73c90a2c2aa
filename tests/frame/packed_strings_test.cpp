#include "orvogeneric/packed_strings.hpp"

#include <gtest/gtest.h>

#include <random>

#include "orvogeneric/variant.hpp"

namespace orvo {
namespace {

String randomText(std::mt19937& random, std::size_t longest) {
  String text(std::uniform_int_distribution<std::size_t>(0, longest)(random), u'\0');
  for (auto& unit : text) unit = static_cast<char16_t>(u'a' + random() % 26);
  return text;
}

std::vector<String> asVector(const PackedStrings& store) { return {store.begin(), store.end()}; }

// Every way of changing the store, in a random order long enough to compact it many times,
// against a vector of strings doing the same.
TEST(PackedStringsTest, AnswersAsAVectorOfStringsWould) {
  for (const std::size_t longest : {0U, 3U, 40U, 3000U}) {
    SCOPED_TRACE("texts up to " + std::to_string(longest) + " units");
    std::mt19937 random(static_cast<unsigned>(longest) + 7);
    PackedStrings store;
    std::vector<String> model;
    for (int step = 0; step < 20000; ++step) {
      const auto what = random() % 10;
      if (what < 3 || model.empty()) {
        const String text = randomText(random, longest);
        store.push_back(text);
        model.push_back(text);
      } else if (what < 8) {
        const std::size_t i = random() % model.size();
        const String text = randomText(random, longest);
        store.set(i, text);
        model[i] = text;
      } else if (what < 9) {
        // An element given its own text, or another element's, while the block may move.
        const std::size_t i = random() % model.size();
        const std::size_t j = random() % model.size();
        store.set(i, store[j].substr(0, store[j].size() / 2));
        model[i] = model[j].substr(0, model[j].size() / 2);
        store.push_back(store[j]);
        model.push_back(model[j]);
      } else if (step % 997 == 0) {
        store.clear();
        model.clear();
      }
      ASSERT_EQ(store.size(), model.size());
    }
    EXPECT_EQ(asVector(store), model);
    std::size_t live = 0;
    for (const auto& text : model) live += text.size();
    EXPECT_LE(store.textUnits(), 2 * live + (1U << 16) + 2 * longest)
        << "what overwritten elements leave behind is given back";
    const PackedStrings copy(store);
    EXPECT_EQ(copy, store);
    EXPECT_EQ(copy.textUnits(), live) << "a copy holds only the live text";
    PackedStrings moved(std::move(store));
    EXPECT_EQ(asVector(moved), model);
  }
}

TEST(PackedStringsTest, ConstructionAndComparison) {
  const PackedStrings empties(3);
  EXPECT_EQ(asVector(empties), (std::vector<String>{u"", u"", u""}));
  const std::vector<String> items{u"one", u"", u"three"};
  EXPECT_EQ(PackedStrings(items), (PackedStrings{u"one", u"", u"three"}));
  EXPECT_NE(PackedStrings(items), (PackedStrings{u"one", u"", u"thre"}));
  EXPECT_NE(PackedStrings(items), (PackedStrings{u"one", u""}));
  EXPECT_EQ(PackedStrings(items).toVector(), items);
  PackedStrings grown{u"ab"};
  grown.shrink_to_fit();
  EXPECT_EQ(grown.capacityBytes(), 2 * sizeof(char16_t) + 8) << "8 bytes an element";
  grown.set(0, u"abcdef");
  EXPECT_EQ(grown.front(), u"abcdef");
}

// Texts of 16 M units and more keep their length in the block, beside the text: at the mark,
// either side of it, and through every kind of rewrite.
TEST(PackedStringsTest, TextsLongerThanTheLengthFieldKeepTheirLength) {
  constexpr std::size_t kMark = (1U << 24) - 1;
  PackedStrings store{u"before"};
  std::vector<String> model{u"before"};
  const auto check = [&](const char* what) {
    ASSERT_EQ(store.size(), model.size()) << what;
    for (std::size_t i = 0; i < model.size(); ++i) {
      ASSERT_EQ(store[i].size(), model[i].size()) << what << ", element " << i;
      ASSERT_TRUE(store[i] == model[i]) << what << ", element " << i;
    }
  };
  for (const std::size_t length : {kMark - 1, kMark, kMark + 1, std::size_t{1} << 25}) {
    String text(length, u'l');
    text.back() = static_cast<char16_t>(u'0' + model.size());
    store.push_back(text);
    model.push_back(std::move(text));
  }
  store.push_back(u"after");
  model.push_back(u"after");
  check("appended");
  store.set(2, String(kMark + 3, u'm'));  // longer: moves to the end
  model[2] = String(kMark + 3, u'm');
  check("grown past the mark");
  store.set(4, String(kMark + 2, u'n'));  // shorter, still long: in place
  model[4] = String(kMark + 2, u'n');
  check("shrunk above the mark");
  store.set(3, u"short");  // below the mark: the length goes back into the word
  model[3] = u"short";
  check("shrunk below the mark");
  store.set(1, String(kMark, u'o'));  // one longer than before, onto the mark
  model[1] = String(kMark, u'o');
  check("grown onto the mark");
  const PackedStrings copy(store);
  EXPECT_EQ(copy, store);
}

// A String array keeps these semantics through the language's assignment and ReDim.
TEST(PackedStringsTest, StringArraysKeepTheLanguagesRules) {
  SafeArray a(0, std::vector<String>{u"p", u"q"});
  const SafeArray shared = a;
  a.set(1, Variant(std::int32_t{42}));
  EXPECT_EQ(*a.get(1).get<String>(), u"42") << "a number assigned to a String element is its text";
  EXPECT_EQ(*shared.get(1).get<String>(), u"q") << "the copy keeps its elements";
  a.set(0, Variant(u"a much longer text than before"));
  EXPECT_EQ(*a.get(0).get<String>(), u"a much longer text than before");
  a.redim(1, 2);
  EXPECT_EQ(a.get(2), Variant(String()));
  EXPECT_EQ(a, SafeArray(1, std::vector<String>{u"", u""}));
}

}  // namespace
}  // namespace orvo
