#include "resources/resource_manager.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/font.hpp"
#include "resources/catalogue.hpp"
#include "support/test_support.hpp"

namespace orvo::resources {
namespace {

const std::filesystem::path kFixtures = ORVO_FIXTURE_DIR;
constexpr std::int32_t kNoSatellite = static_cast<std::int32_t>(0x8004F138U);
constexpr std::int32_t kNoString = static_cast<std::int32_t>(0x8004F144U);

// Satellites of stub "Mgr" in a scratch directory: the fixtures named, and anything else
// written by the test.
class Manager : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    for (const char* name : {"Mgr809.dll", "Mgr411.dll", "Mgr804.dll"}) {
      std::filesystem::copy_file(kFixtures / name, dir_ / name);
    }
  }
  std::shared_ptr<ResourceManager> make(std::int32_t lcid, const char* stub = "Mgr") {
    String fileStub = fromUtf8(stub);
    String directory = fromUtf8(dir_.string());
    return FactoryMethods().GetResourceManager(fileStub, &directory, &lcid);
  }
  test::ScopedLocale locale_{"en_GB.UTF-8"};
};

TEST_F(Manager, StringsComeFromTheLocalesSatelliteOrTheMappedOne) {
  for (const auto& row : test::readTestData("resources/manager_strings.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const std::int32_t lcid = test::integerOf(row.fields[0]);
    const auto manager = make(lcid);
    EXPECT_EQ(manager->LocaleID(), lcid);
    EXPECT_EQ(manager->LoadResString(test::integerOf(row.fields[1])), row.fields[2]);
  }
}

TEST_F(Manager, ErrorsCarryTheirNumbersAndCatalogueTexts) {
  write("Mgr407.dll", "not a library\r\n");
  for (const auto& row : test::readTestData("resources/manager_errors.tsv", 7)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;  // stub, directory, locale, id, number, description, source
    const Error e = test::errorOf([&] {
      String stub = f[0];
      String directory = inScratch(f[1]);
      std::int32_t lcid = f[2].empty() ? 0 : test::integerOf(f[2]);
      const auto manager =
          FactoryMethods().GetResourceManager(stub, &directory, f[2].empty() ? nullptr : &lcid);
      if (!f[3].empty()) manager->LoadResString(test::integerOf(f[3]));
    });
    EXPECT_EQ(e.number(), static_cast<std::int32_t>(test::integerOf(f[4])));
    EXPECT_EQ(e.description(), inScratch(f[5]));
    EXPECT_EQ(e.source(), f[6]);
  }
}

TEST_F(Manager, TheThreadsLocaleFallsBackSilentlyAnExplicitOneDoesNot) {
  const test::ScopedLocale japanese("ja_JP.UTF-8");
  String stub = u"Mgr";
  String directory = fromUtf8(dir_.string());
  const auto fromThread = FactoryMethods().GetResourceManager(stub, &directory);
  EXPECT_EQ(fromThread->LocaleID(), 1041);
  EXPECT_EQ(fromThread->LoadResString(3), u"British only");
  // Assigning the same locale again makes the choice explicit without reloading.
  fromThread->LocaleID(1041);
  EXPECT_EQ(test::errorNumber([&] { fromThread->LoadResString(3); }), kNoString);
}

TEST_F(Manager, BareNamesAreLookedForBesideTheApplicationThenInTheCurrentDirectory) {
  const auto app = dir_ / "app";
  std::filesystem::create_directory(app);
  std::filesystem::rename(dir_ / "Mgr809.dll", app / "Mgr809.dll");
  frame::StaticGlobals::instance().resetForTesting();
  frame::InitialiseParentAppProperties(fromUtf8(app.string()), u"Model");
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(dir_);
  String stub = u"Mgr";
  String none;
  std::int32_t japanese = 1041;
  const auto manager = FactoryMethods().GetResourceManager(stub, &none, &japanese);
  std::filesystem::current_path(previous);
  frame::StaticGlobals::instance().resetForTesting();
  EXPECT_EQ(manager->SearchDirectory(), u"");
  EXPECT_EQ(manager->LoadResString(1), u"こんにちは");  // Mgr411.dll, in the current directory
  manager->LocaleID(2057);
  EXPECT_EQ(manager->LoadResString(3), u"British only");  // Mgr809.dll, beside the application
}

TEST_F(Manager, AFailedLocaleLeavesTheFallbackServing) {
  const auto manager = make(1041);
  EXPECT_EQ(test::errorNumber([&] { manager->LocaleID(1036); }), kNoSatellite);
  EXPECT_EQ(manager->LocaleID(), 1036);
  EXPECT_EQ(manager->LoadResString(1), u"Hello from Britain");
  EXPECT_EQ(manager->LoadResString(3), u"British only");
}

TEST_F(Manager, TranslationsExpandTheirArguments) {
  const auto manager = make(1041);
  SafeArray args(VarType::Variant, 1, {Variant(String(u"3")), Variant(std::int32_t{12})});
  EXPECT_EQ(manager->ExpandTranslation(4, args), u"値 3 / 12");
  EXPECT_EQ(make(2057)->ExpandTranslation(4, args), u"Value 3 of 12");
}

TEST_F(Manager, FarEasternLocalesAreTheMappedFour) {
  const std::set<std::int32_t> farEast = {1028, 1041, 1042, 2052};
  write("Mgr412.dll", "");  // present but not loadable: the locale still counts
  for (std::int32_t lcid : {1028, 1041, 1042, 2052, 3076, 4100, 1033, 2057, 1031}) {
    auto manager = make(2057);
    try {
      manager->LocaleID(lcid);
    } catch (const Error&) {  // NOLINT(bugprone-empty-catch): the locale is kept all the same
    }
    EXPECT_EQ(isTrue(manager->FarEasternLocale()), farEast.count(lcid) == 1) << lcid;
  }
}

TEST_F(Manager, UseINIReadsLocaleIniAndTracesItsBlock) {
  const String ini = write("Locale.ini",
                           "[Locale]\r\nLocaleIDDecimal=1041\r\nFontNameInFarEast=MS Gothic\r\n"
                           "AllowBoldInFarEast=True\r\n");
  const test::TraceCapture trace;
  const auto manager = FactoryMethods().GetResourceManagerUseINI(
      u"  Mgr  ", u" " + fromUtf8(dir_.string()) + u" ", -1, ini);
  EXPECT_EQ(manager->LocaleID(), 1041);
  EXPECT_EQ(manager->FileStub(), u"Mgr");
  EXPECT_EQ(manager->FontNameInFarEast(), u"MS Gothic");
  EXPECT_TRUE(isTrue(manager->AllowBoldInFarEast()));
  EXPECT_TRUE(isTrue(manager->ChangeFontNameInFarEast()));
  EXPECT_TRUE(isTrue(manager->IncreasePointSizeInFarEast()));
  const auto& lines = trace.messages();
  ASSERT_GE(lines.size(), 9U);
  const std::vector<String> block(lines.end() - 9, lines.end());
  EXPECT_EQ(block[0], u"GetResourceManagerUseINI~~~~~~~~~~~~~~~~~~~~~~~~~~~~start");
  EXPECT_EQ(block[1], u"FileStub:                   Mgr");
  EXPECT_EQ(block[2], u"LocaleID:                   1041");
  EXPECT_EQ(block[3], u"SearchDirectory:            " + manager->SearchDirectory());
  EXPECT_EQ(block[4], u"Locale.ini:                 " + ini);
  EXPECT_TRUE(block[5].starts_with(u"orvoGeneric Version:        ")) << toUtf8(block[5]);
  EXPECT_EQ(block[7], u"WindowsCodePage:            1252");
  EXPECT_EQ(block[8], u"GetResourceManagerUseINI~~~~~~~~~~~~~~~~~~~~~~~~~~~~~end");
  for (std::size_t i = 1; i < 8; ++i) EXPECT_EQ(block[i][27], u' ') << i;
}

TEST_F(Manager, UseINIWithoutAFileTakesTheDefaults) {
  const auto manager = FactoryMethods().GetResourceManagerUseINI(u"Mgr", fromUtf8(dir_.string()),
                                                                 1028, path("Locale.ini"));
  EXPECT_EQ(manager->LocaleID(), 1028);
  EXPECT_EQ(manager->FontNameInFarEast(), u"Arial");
  EXPECT_FALSE(isTrue(manager->AllowBoldInFarEast()));
}

// A font that snaps every requested size down to the sizes it has (any size when it lists
// none), and records what it was asked for.
class SnappingFont final : public FontObject {
 public:
  explicit SnappingFont(std::vector<double> sizes, double size = 9)
      : sizes_(std::move(sizes)), size_(Currency::fromDouble(size)) {}
  [[nodiscard]] std::string_view className() const noexcept override { return "SnappingFont"; }
  String Name() override { return name_; }
  void Name(const String& value) override {
    if (refuseName) throw Error(380, u"Invalid property value");
    name_ = value;
  }
  Currency Size() override { return size_; }
  void Size(Currency value) override {
    requested.push_back(value.toDouble());
    double snapped = sizes_.empty() ? value.toDouble() : sizes_.front();
    for (double s : sizes_) {
      if (s <= value.toDouble()) snapped = s;
    }
    size_ = Currency::fromDouble(snapped);
  }
  VBool Bold() override { return bold_; }
  void Bold(VBool value) override { bold_ = value; }

  std::vector<double> requested;
  bool refuseName = false;

 private:
  std::vector<double> sizes_;
  String name_ = u"Tahoma";
  Currency size_;
  VBool bold_ = VBool::True;
};

TEST_F(Manager, FarEasternFontsGrowInStepsUntilTheFontHasReallyGrown) {
  auto sizes = [](const String& field) {
    std::istringstream in(toUtf8(field));
    return std::vector<double>(std::istream_iterator<double>(in), {});
  };
  const auto manager = make(1041);
  for (const auto& row : test::readTestData("resources/far_east_fonts.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    auto font = std::make_shared<SnappingFont>(sizes(row.fields[1]));
    std::shared_ptr<Object> object = font;
    manager->ModifyFontForLocale(object);
    EXPECT_EQ(font->Name(), u"Arial");
    EXPECT_FALSE(isTrue(font->Bold()));
    EXPECT_DOUBLE_EQ(font->Size().toDouble(), test::parseHexDouble(row.fields[3]));
    const std::vector<double> requested = sizes(row.fields[2]);
    ASSERT_EQ(font->requested.size(), requested.size());
    for (std::size_t i = 0; i < requested.size(); ++i) {
      EXPECT_NEAR(font->requested[i], requested[i], 1e-4) << "step " << i;
    }
  }
}

TEST_F(Manager, FontSwitchesAndIgnoredFailures) {
  auto font = std::make_shared<SnappingFont>(std::vector<double>{});
  std::shared_ptr<Object> object = font;
  make(2057)->ModifyFontForLocale(object);  // not far-eastern: untouched
  EXPECT_EQ(font->Name(), u"Tahoma");
  EXPECT_TRUE(isTrue(font->Bold()));
  EXPECT_TRUE(font->requested.empty());

  const auto manager = make(2052);
  manager->ChangeFontNameInFarEast(VBool::False);
  manager->IncreasePointSizeInFarEast(VBool::False);
  manager->AllowBoldInFarEast(VBool::True);
  manager->ModifyFontForLocale(object);
  EXPECT_EQ(font->Name(), u"Tahoma");
  EXPECT_TRUE(isTrue(font->Bold()));
  EXPECT_TRUE(font->requested.empty());

  // A name the font refuses does not stop the size and the boldness.
  font->refuseName = true;
  manager->ChangeFontNameInFarEast(VBool::True);
  manager->IncreasePointSizeInFarEast(VBool::True);
  manager->AllowBoldInFarEast(VBool::False);
  manager->ModifyFontForLocale(object);
  EXPECT_EQ(font->Name(), u"Tahoma");
  EXPECT_DOUBLE_EQ(font->Size().toDouble(), 9.8);
  EXPECT_FALSE(isTrue(font->Bold()));

  std::shared_ptr<Object> nothing;
  EXPECT_NO_THROW(manager->ModifyFontForLocale(nothing));
}

TEST_F(Manager, LateBindingReachesTheManagerAndItsProvider) {
  const auto factory = automation::globalInstance("FactoryMethods");
  const auto made = automation::invoke(
      *factory, "GetResourceManager",
      {Variant(String(u"Mgr")), Variant(fromUtf8(dir_.string())), Variant(std::int32_t{1041})});
  ASSERT_NE(made.result.object(), nullptr);
  Object& manager = **made.result.object();
  EXPECT_EQ(manager.className(), "ResourceManager");
  EXPECT_EQ(automation::invoke(manager, "LoadResString", {Variant(std::int32_t{1})}).result,
            Variant(String(u"こんにちは")));
  EXPECT_EQ(
      automation::invoke(manager, "FarEasternLocale", {}, {}, automation::MemberKind::PropertyGet)
          .result,
      Variant(VBool::True));
  ResourceProvider provider;
  EXPECT_EQ(provider.LoadResString(1), u"");
}

// LoadStringW's choice among the languages of one satellite, as recorded on the platform for
// the multilingual fixture under several user locales.
TEST(SatelliteLoader, LanguageChoiceFollowsThePlatformRecording) {
  const std::map<std::string, const char*> locales = {{"1033", "en_US.UTF-8"},
                                                      {"2057", "en_GB.UTF-8"},
                                                      {"1036", "fr_FR.UTF-8"},
                                                      {"1041", "ja_JP.UTF-8"},
                                                      {"1031", "de_DE.UTF-8"}};
  int compared = 0;
  for (const auto& row : test::readGolden("satellite_strings.tsv")) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    ASSERT_EQ(f.size(), 5U) << row.line;
    const test::ScopedLocale locale(locales.at(toUtf8(f[0])));
    const std::string file = toUtf8(f[1]);
    const auto satellite = loadSatellite(fromUtf8((kFixtures / file).string()));
    if (f[2] == u"load-failed") {
      EXPECT_EQ(satellite, nullptr) << file;
      ++compared;
      continue;
    }
    if (file == "NoResources.dll") {
      // The platform loads an image without resources; a satellite without a resource
      // section is refused here, and the manager calls it not loadable.
      EXPECT_EQ(satellite, nullptr);
      continue;
    }
    ASSERT_NE(satellite, nullptr) << file;
    const auto id = static_cast<std::uint16_t>(std::stoi(toUtf8(f[2])));
    const auto text = loadSatelliteString(*satellite, id, 4096);
    if (f[3] == u"0") {
      EXPECT_FALSE(text.has_value()) << row.line;
    } else {
      ASSERT_TRUE(text.has_value()) << row.line;
      EXPECT_EQ(*text, f[4]) << row.line;
      EXPECT_EQ(fromUtf8(std::to_string(text->size())), f[3]) << row.line;
    }
    ++compared;
  }
  EXPECT_EQ(compared, 140);
}

TEST(SatelliteLoader, BareNamesAndPathsTheAnsiPageCannotHold) {
  // A name the ANSI page cannot write is asked for with "?" in its place: never found.
  EXPECT_EQ(loadSatellite(fromUtf8((kFixtures / "AppRes809.dll").string()) + u"\u4E00"), nullptr);
  const auto a = loadSatellite(fromUtf8((kFixtures / "AppRes809.dll").string()));
  const auto b = loadSatellite(fromUtf8((kFixtures / "AppRes809.dll").string()));
  EXPECT_EQ(a, b);  // loaded once while held
  EXPECT_EQ(loadSatellite(u""), nullptr);
  EXPECT_EQ(loadSatellite(u"NoSuchSatellite.dll"), nullptr);
}

TEST(Catalogue, MessagesAreTheLibrarysOwn) {
  for (const auto& row : test::readTestData("resources/catalogue.tsv", 6)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    std::vector<Variant> args;
    for (std::size_t i = 2; i < 6 && !row.fields[i].empty(); ++i) {
      args.push_back(test::typedValue(row.fields[i]));
    }
    EXPECT_EQ(LibraryMessage(test::integerOf(row.fields[0]), SafeArray(VarType::Variant, 0, args)),
              row.fields[1]);
  }
  EXPECT_EQ(LibraryString(317), u"Directory '%0' does not exist");
  for (std::int32_t absent : {0, 100, 106, 209, 212, 305, 313, 327}) {
    EXPECT_EQ(test::errorNumber([&] { LibraryString(absent); }), 326) << absent;
  }
}

}  // namespace
}  // namespace orvo::resources
