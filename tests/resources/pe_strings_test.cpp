#include "resources/pe_strings.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "orvogeneric/satellite.hpp"
#include "support/test_support.hpp"

namespace orvo::resources {
namespace {

using Image = std::vector<std::uint8_t>;

const std::string kFixtures = ORVO_FIXTURE_DIR;

Image load(const std::string& name) {
  std::ifstream in(kFixtures + "/" + name, std::ios::binary);
  EXPECT_TRUE(in) << name;
  return Image(std::istreambuf_iterator<char>(in), {});
}

// Everything strings.rc compiles to, in language-then-id order.
const std::vector<SatelliteString>& expectedStrings() {
  static const std::vector<SatelliteString> all = [] {
    std::vector<SatelliteString> rows;
    for (const auto& row : test::readTestData("resources/strings_rc.tsv", 3)) {
      rows.push_back({static_cast<std::uint16_t>(test::integerOf(row.fields[0])),
                      static_cast<std::uint16_t>(test::integerOf(row.fields[1])), row.fields[2]});
    }
    return rows;
  }();
  return all;
}

// Whether a list of strings is the expected one, entry by entry.
template <class Entries, class TextOf>
void expectAllStrings(const Entries& entries, TextOf textOf) {
  const auto& expected = expectedStrings();
  ASSERT_EQ(entries.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(entries[i].language, expected[i].language) << i;
    EXPECT_EQ(entries[i].id, expected[i].id) << i;
    EXPECT_TRUE(textOf(entries[i]) == expected[i].text) << "entry " << i;
  }
}

PeFailure failureNamed(const String& name) {
  static const std::map<String, PeFailure> failures = {{u"NotPeImage", PeFailure::NotPeImage},
                                                       {u"Truncated", PeFailure::Truncated},
                                                       {u"Malformed", PeFailure::Malformed},
                                                       {u"NoResources", PeFailure::NoResources}};
  return failures.at(name);
}

class Satellite : public ::testing::TestWithParam<std::tuple<const char*, std::uint16_t, bool>> {};

TEST_P(Satellite, ReadsEveryStringOfEveryLanguage) {
  const auto [file, machine, pe32Plus] = GetParam();
  const Image image = load(file);
  const auto result = readPeStrings(image);
  ASSERT_TRUE(result) << result.detail;
  const StringTable& table = *result.table;
  EXPECT_EQ(table.machine(), machine);
  EXPECT_EQ(table.pe32Plus(), pe32Plus);

  expectAllStrings(table.entries(), [&](const auto& e) { return table.text(e); });
  for (const auto& e : expectedStrings()) {
    const auto found = table.find(e.language, e.id);
    ASSERT_TRUE(found.has_value()) << e.language << " " << e.id;
    EXPECT_TRUE(*found == e.text) << e.language << " " << e.id;
  }
  EXPECT_EQ(table.languages(), (std::vector<std::uint16_t>{0x040C, 0x0411, 0x0809}));
}

TEST_P(Satellite, MissingStringsAndLanguagesAreAbsent) {
  const auto result = readPeStrings(load(std::get<0>(GetParam())));
  ASSERT_TRUE(result) << result.detail;
  const StringTable& table = *result.table;
  for (const auto& row : test::readTestData("resources/strings_rc_absent.tsv", 2)) {
    EXPECT_FALSE(table.find(test::integerOf(row.fields[0]), test::integerOf(row.fields[1])))
        << "data line " << row.line;
  }
  const auto japanese = table.strings(0x0411);
  ASSERT_EQ(japanese.size(), 2U);
  EXPECT_EQ(japanese[0].id, 101);
  EXPECT_EQ(japanese[1].id, 104);
  EXPECT_TRUE(table.strings(0x0409).empty());
}

// Every proper prefix of a good library is cut short: a failure that says so, never a read past
// the bytes given (the sanitizers of the test build watch the copy's end).
TEST_P(Satellite, EveryTruncationIsAnError) {
  const Image image = load(std::get<0>(GetParam()));
  ASSERT_GT(image.size(), 4096U);
  for (std::size_t cut = 0; cut < image.size(); ++cut) {
    const Image prefix(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(cut));
    const auto result = readPeStrings(prefix);
    ASSERT_FALSE(result) << "cut at " << cut;
    ASSERT_EQ(result.failure, cut < 2 ? PeFailure::NotPeImage : PeFailure::Truncated)
        << "cut at " << cut << ": " << result.detail;
  }
}

INSTANTIATE_TEST_SUITE_P(PeStrings, Satellite,
                         ::testing::Values(std::tuple("AppRes809.dll", std::uint16_t{0x8664}, true),
                                           std::tuple("AppRes809_i386.dll", std::uint16_t{0x14C},
                                                      false)));

TEST(PeStrings, ImagesWithoutStrings) {
  const auto none = readPeStrings(load("NoStrings.dll"));
  ASSERT_TRUE(none) << none.detail;
  EXPECT_TRUE(none.table->entries().empty());
  EXPECT_TRUE(none.table->languages().empty());

  const auto noSection = readPeStrings(load("NoResources.dll"));
  ASSERT_FALSE(noSection);
  EXPECT_EQ(noSection.failure, PeFailure::NoResources);
}

TEST(PeStrings, FilesThatAreNotImages) {
  for (const auto& row : test::readTestData("resources/not_images.tsv", 3)) {
    const std::string bytes = test::bytesOf(row.fields[1]);
    const auto result = readPeStrings(Image(bytes.begin(), bytes.end()));
    EXPECT_FALSE(result) << "data line " << row.line;
    EXPECT_EQ(result.failure, failureNamed(row.fields[2])) << "data line " << row.line;
    EXPECT_FALSE(result.detail.empty()) << "data line " << row.line;
  }
}

// ---- Images made byte by byte, for the structures a resource compiler never writes. ----

void put16(Image& b, std::size_t at, std::uint32_t v) {
  b[at] = static_cast<std::uint8_t>(v);
  b[at + 1] = static_cast<std::uint8_t>(v >> 8);
}
void put32(Image& b, std::size_t at, std::uint32_t v) {
  put16(b, at, v & 0xFFFF);
  put16(b, at + 2, v >> 16);
}
std::uint32_t get32(const Image& b, std::size_t at) {
  return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) |
         (static_cast<std::uint32_t>(b[at + 3]) << 24);
}

constexpr std::uint32_t kSectionAddress = 0x1000;
constexpr std::size_t kSectionOffset = 0x200;

// A resource section under construction, its root directory (one entry) at the start where the
// data directory points; other directories are added as needed, their entries filled in later.
struct Resources {
  Image bytes;

  Resources() { directory(1); }

  std::size_t directory(std::size_t entries) {
    const std::size_t at = bytes.size();
    bytes.resize(at + 16 + entries * 8);
    put16(bytes, at + 14, static_cast<std::uint32_t>(entries));
    return at;
  }
  void entry(std::size_t directory, std::size_t index, std::uint32_t name, std::uint32_t value) {
    put32(bytes, directory + 16 + index * 8, name);
    put32(bytes, directory + 20 + index * 8, value);
  }
  // A string block and the data entry that points at it; returns the data entry's offset.
  std::size_t block(const std::vector<std::u16string>& strings, std::size_t slots = 16) {
    const std::size_t data = bytes.size();
    for (std::size_t i = 0; i < slots; ++i) {
      const std::u16string s = i < strings.size() ? strings[i] : u"";
      bytes.push_back(static_cast<std::uint8_t>(s.size()));
      bytes.push_back(static_cast<std::uint8_t>(s.size() >> 8));
      for (const char16_t c : s) {
        bytes.push_back(static_cast<std::uint8_t>(c));
        bytes.push_back(static_cast<std::uint8_t>(c >> 8));
      }
    }
    const std::size_t entry = bytes.size();
    bytes.resize(entry + 16);
    put32(bytes, entry, kSectionAddress + static_cast<std::uint32_t>(data));
    put32(bytes, entry + 4, static_cast<std::uint32_t>(entry - data));
    return entry;
  }
};

constexpr std::uint32_t kSub = 0x80000000U;

// One section at 0x1000 holding the resources, with a PE32 or PE32+ optional header.
Image imageOf(const Image& resources, bool pe32Plus = true) {
  Image b(kSectionOffset + resources.size(), 0);
  b[0] = 'M';
  b[1] = 'Z';
  put32(b, 0x3C, 0x40);
  put32(b, 0x40, 0x00004550);
  put16(b, 0x44, pe32Plus ? 0x8664 : 0x14C);
  put16(b, 0x46, 1);
  const std::uint32_t optionalSize = pe32Plus ? 240 : 224;
  put16(b, 0x54, optionalSize);
  const std::size_t optional = 0x58;
  put16(b, optional, pe32Plus ? 0x20B : 0x10B);
  put32(b, optional + 60, kSectionOffset);
  const std::size_t directories = optional + (pe32Plus ? 112 : 96);
  put32(b, directories - 4, 16);
  put32(b, directories + 16, kSectionAddress);
  put32(b, directories + 20, static_cast<std::uint32_t>(resources.size()));
  const std::size_t section = optional + optionalSize;
  std::memcpy(&b[section], ".rsrc", 5);
  put32(b, section + 8, static_cast<std::uint32_t>(resources.size()));
  put32(b, section + 12, kSectionAddress);
  put32(b, section + 16, static_cast<std::uint32_t>(resources.size()));
  put32(b, section + 20, kSectionOffset);
  std::copy(resources.begin(), resources.end(), b.begin() + kSectionOffset);
  return b;
}

// Root with the string type only; blocks given as (block id, [(language, data entry)]).
struct BlockSpec {
  std::uint32_t block;
  std::vector<std::pair<std::uint32_t, std::size_t>> languages;
};
std::size_t tree(Resources& r, const std::vector<BlockSpec>& blocks) {
  const std::size_t root = 0;
  const std::size_t names = r.directory(blocks.size());
  r.entry(root, 0, 6, kSub | static_cast<std::uint32_t>(names));
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const std::size_t languages = r.directory(blocks[i].languages.size());
    r.entry(names, i, blocks[i].block, kSub | static_cast<std::uint32_t>(languages));
    for (std::size_t j = 0; j < blocks[i].languages.size(); ++j) {
      r.entry(languages, j, blocks[i].languages[j].first,
              static_cast<std::uint32_t>(blocks[i].languages[j].second));
    }
  }
  return names;
}

TEST(PeStrings, BlockNumbersGiveTheIds) {
  for (const bool pe32Plus : {true, false}) {
    Resources r;
    const std::size_t first = r.block({u"a", u"", u"c"});
    const std::size_t second =
        r.block({u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"o"});
    const std::size_t ignored = r.block({u"never"});
    // Block 0, blocks beyond 4096, named blocks and languages beyond 16 bits hold no id.
    tree(r, {{1, {{0x0409, first}, {0x10409, ignored}}},
             {7, {{0x0407, second}}},
             {0, {{0x0409, ignored}}},
             {4097, {{0x0409, ignored}}},
             {kSub | 0, {{0x0409, ignored}}}});
    const auto result = readPeStrings(imageOf(r.bytes, pe32Plus));
    ASSERT_TRUE(result) << result.detail;
    const auto& t = *result.table;
    ASSERT_EQ(t.entries().size(), 3U);
    EXPECT_EQ(t.find(0x0409, 0), u"a");
    EXPECT_FALSE(t.find(0x0409, 1));
    EXPECT_EQ(t.find(0x0409, 2), u"c");
    EXPECT_EQ(t.find(0x0407, 111), u"o");  // block 7 slot 15: (7-1)*16+15
    EXPECT_EQ(t.pe32Plus(), pe32Plus);
  }
}

TEST(PeStrings, ABlockListedTwiceKeepsTheFirst) {
  Resources r;
  const std::size_t first = r.block({u"first"});
  const std::size_t second = r.block({u"second", u"extra"});
  tree(r, {{1, {{0x0409, first}, {0x0409, second}}}});
  const auto result = readPeStrings(imageOf(r.bytes));
  ASSERT_TRUE(result) << result.detail;
  EXPECT_EQ(result.table->find(0x0409, 0), u"first");
  EXPECT_EQ(result.table->find(0x0409, 1), u"extra");
}

TEST(PeStrings, DamagedStructuresAreRefused) {
  struct Case {
    const char* what;
    void (*damage)(Resources&);
  };
  const Case cases[] = {
      {"a block shorter than its sixteen counts",
       [](Resources& r) {
         tree(r, {{1, {{0x0409, r.block({u"x"}, 15)}}}});
       }},
      {"a string longer than its block",
       [](Resources& r) {
         const std::size_t data = r.block({u"x"});
         put32(r.bytes, data + 4, get32(r.bytes, data + 4) - 34);  // the block ends inside "x"
         tree(r, {{1, {{0x0409, data}}}});
       }},
      {"a block outside the section",
       [](Resources& r) {
         const std::size_t data = r.block({u"x"});
         put32(r.bytes, data, 0x7FFFFFF0);
         tree(r, {{1, {{0x0409, data}}}});
       }},
      {"a block whose size runs past the section",
       [](Resources& r) {
         const std::size_t data = r.block({u"x"});
         put32(r.bytes, data + 4, 0xFFFFFFFF);
         tree(r, {{1, {{0x0409, data}}}});
       }},
      {"a data entry outside the section",
       [](Resources& r) {
         tree(r, {{1, {{0x0409, 0x7FFFFFFF}}}});
       }},
      {"a language that is a directory",
       [](Resources& r) {
         tree(r, {{1, {{0x0409, kSub | 0}}}});
       }},
      {"a block that is data",
       [](Resources& r) {
         const std::size_t names = tree(r, {{1, {}}});
         r.entry(names, 0, 1, static_cast<std::uint32_t>(r.block({u"x"})));
       }},
      {"a string type that is data",
       [](Resources& r) {
         tree(r, {});
         r.entry(0, 0, 6, 16);
       }},
      {"a directory beyond the section",
       [](Resources& r) {
         tree(r, {});
         r.entry(0, 0, 6, kSub | 0x7FFFFFF0);
       }},
      {"a directory whose entry count runs past the section",
       [](Resources& r) {
         const std::size_t names = tree(r, {});
         put16(r.bytes, names + 12, 0xFFFF);
       }},
      {"a string type pointing back at the root",
       [](Resources& r) {
         tree(r, {{1, {{0x0409, r.block({u"x"})}}}});
         r.entry(0, 0, 6, kSub | 0);
       }},
  };
  for (const Case& c : cases) {
    Resources r;
    c.damage(r);
    const auto result = readPeStrings(imageOf(r.bytes));
    EXPECT_FALSE(result) << c.what;
    EXPECT_EQ(result.failure, PeFailure::Malformed) << c.what << ": " << result.detail;
  }
}

// Directories and blocks shared between entries could make a small file stand for a huge table;
// both are refused quickly instead.
TEST(PeStrings, SharedStructuresCannotMultiplyTheWork) {
  {
    Resources r;
    const std::size_t data = r.block({u"x"});
    const std::size_t root = 0;
    const std::size_t names = r.directory(4096);
    const std::size_t languages = r.directory(4000);
    r.entry(root, 0, 6, kSub | static_cast<std::uint32_t>(names));
    for (std::uint32_t i = 0; i < 4096; ++i) {
      r.entry(names, i, i + 1, kSub | static_cast<std::uint32_t>(languages));
    }
    for (std::uint32_t j = 0; j < 4000; ++j) {
      r.entry(languages, j, j, static_cast<std::uint32_t>(data));
    }
    const auto start = std::chrono::steady_clock::now();
    const auto result = readPeStrings(imageOf(r.bytes));
    EXPECT_FALSE(result);
    EXPECT_EQ(result.failure, PeFailure::Malformed) << result.detail;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  }
  {
    Resources r;
    const std::size_t data = r.block({std::u16string(30000, u'w')});
    std::vector<std::pair<std::uint32_t, std::size_t>> languages;
    for (std::uint32_t j = 1; j <= 100; ++j) languages.emplace_back(j, data);
    tree(r, {{1, languages}});
    const auto result = readPeStrings(imageOf(r.bytes));
    EXPECT_FALSE(result);
    EXPECT_EQ(result.failure, PeFailure::Malformed) << result.detail;
  }
}

TEST(PeStrings, HeaderDamage) {
  const Image good = load("AppRes809.dll");
  const std::size_t pe = get32(good, 0x3C);
  for (const auto& row : test::readTestData("resources/pe_header_damage.tsv", 6)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    Image bad = good;
    const std::size_t at = (f[1] == u"pe" ? pe : pe + 24) + test::integerOf(f[2]);
    const auto value = static_cast<std::uint32_t>(test::integerOf(f[4]));
    f[3] == u"2" ? put16(bad, at, value) : put32(bad, at, value);
    const auto result = readPeStrings(bad);
    EXPECT_FALSE(result);
    EXPECT_EQ(result.failure, failureNamed(f[5])) << result.detail;
  }
  // The untouched library reads, so each failure above is the damage's doing.
  EXPECT_TRUE(readPeStrings(good));
}

TEST(PeStrings, ReadsFilesThroughThePlatform) {
  const auto viaFile = readPeStringsFile(fromUtf8(kFixtures + "/AppRes809.dll"));
  ASSERT_TRUE(viaFile) << viaFile.detail;
  EXPECT_EQ(viaFile.table->entries().size(), expectedStrings().size());
  EXPECT_EQ(viaFile.table->find(0x0411, 101), u"一行目%n二行目");

  for (const std::string& path : {kFixtures + "/missing.dll", kFixtures}) {
    const auto result = readPeStringsFile(fromUtf8(path));
    EXPECT_FALSE(result) << path;
    EXPECT_EQ(result.failure, PeFailure::Unreadable) << path;
  }
}

TEST(PeStrings, ExportedInterfaceListsTheSameStrings) {
  const auto all = SatelliteStrings(fromUtf8(kFixtures + "/AppRes809_i386.dll"));
  ASSERT_TRUE(all.has_value());
  expectAllStrings(*all, [](const auto& e) { return e.text; });
  String why;
  EXPECT_FALSE(SatelliteStrings(fromUtf8(kFixtures + "/strings.rc"), &why).has_value());
  EXPECT_EQ(why, u"not a PE image: no MZ header");
  EXPECT_FALSE(SatelliteStrings(fromUtf8(kFixtures + "/NoResources.dll"), &why).has_value());
  EXPECT_EQ(why, u"no resource section: no resource directory");
}

}  // namespace
}  // namespace orvo::resources
