#include "resources/resource_manager.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
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
constexpr std::int32_t kNoDirectory = static_cast<std::int32_t>(0x8004F13CU);
constexpr std::int32_t kIllegalNumber = static_cast<std::int32_t>(0x8004F141U);
constexpr std::int32_t kNoStub = static_cast<std::int32_t>(0x8004F143U);
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
  struct Case {
    std::int32_t lcid;
    std::int32_t id;
    String text;
  };
  const Case cases[] = {
      {2057, 1, u"Hello from Britain"},
      {2057, 2, u"First\r\nSecond\r\nThird"},
      {2057, 5, u"%N stays, \r\n breaks"},
      {2057, 65535, u"the very last id"},
      {1041, 1, u"こんにちは"},
      {1041, 2, u"一\r\n二"},
      {1033, 1, u"Hello from Britain"},  // no Mgr409.dll: the British one is the primary
      {1028, 1, u"你好"},                // no Mgr404.dll: the PRC one
      {2052, 1, u"你好"},
  };
  for (const auto& c : cases) {
    const auto manager = make(c.lcid);
    EXPECT_EQ(manager->LocaleID(), c.lcid);
    EXPECT_EQ(manager->LoadResString(c.id), c.text) << c.lcid << " " << c.id;
  }
}

TEST_F(Manager, ErrorsCarryTheirNumbersAndCatalogueTexts) {
  write("Mgr407.dll", "not a library\r\n");
  const String dir = fromUtf8(dir_.string()) + u"/";
  struct Case {
    const char* what;
    std::function<void()> call;
    std::int32_t number;
    String description;
    String source;
  };
  const auto manager = make(2057);
  const auto japanese = make(1041);
  const Case cases[] = {
      {"id 0", [&] { manager->LoadResString(0); }, kIllegalNumber,
       u"Attempted to load resource with illegal number (0)", u"orvoGeneric DLL"},
      {"id -1", [&] { manager->LoadResString(-1); }, kIllegalNumber,
       u"Attempted to load resource with illegal number (-1)", u"orvoGeneric DLL"},
      {"id 65536", [&] { manager->LoadResString(65536); }, kIllegalNumber,
       u"Attempted to load resource with illegal number (65536)", u"orvoGeneric DLL"},
      {"missing in the fallback", [&] { manager->LoadResString(7); }, kNoString,
       u"No string located for resource number 7  in Mgr809.dll", u"orvoGeneric DLL"},
      {"missing, locale chosen", [&] { japanese->LoadResString(3); }, kNoString,
       u"No string located for resource number 3  in Mgr411.dll", u"orvoGeneric DLL"},
      {"no file", [&] { make(1036); }, kNoSatellite,
       u"Cannot locate language support file '" + dir + u"Mgr40C.dll'\r\nInitialise",
       u"orvoGeneric DLL"},
      {"not loadable", [&] { make(1031); }, kNoSatellite,
       u"Cannot load language support file '" + dir + u"Mgr407.dll'\r\nInitialise",
       u"orvoGeneric DLL"},
      {"blank stub", [&] { make(2057, "   "); }, kNoStub,
       u"No resource DLL filename stub has been given", u"orvoGeneric DLL"},
      {"no directory",
       [&] {
         String stub = u"Mgr";
         String missing = fromUtf8((dir_ / "absent").string());
         FactoryMethods().GetResourceManager(stub, &missing);
       },
       kNoDirectory, u"Directory '" + fromUtf8((dir_ / "absent").string()) + u"/' does not exist",
       u"orvoGeneric DLL"},
      {"no satellites at all", [&] { make(0, "Nothing")->LoadResString(1); }, kNoSatellite,
       u"LoadResString: no satellite DLLs loaded.", u""},
  };
  for (const auto& c : cases) {
    const Error e = test::errorOf(c.call);
    EXPECT_EQ(e.number(), c.number) << c.what;
    EXPECT_EQ(e.description(), c.description) << c.what;
    EXPECT_EQ(e.source(), c.source) << c.what;
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
  EXPECT_EQ(block[0].size(), 57U);
  EXPECT_EQ(block[8].size(), 56U);
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
  struct Case {
    const char* what;
    std::vector<double> sizes;
    std::vector<double> requested;
    double final;
  };
  const Case cases[] = {
      {"any size", {}, {9.8}, 9.8},
      {"quarter points", {9, 9.75, 10.5}, {9.8}, 9.75},
      // The last step asks for 10.6: single-precision sums land just below S + 1.6.
      {"none in reach", {9, 10.75}, {9.8, 10.0, 10.2, 10.4, 10.6}, 9},
      {"half points", {9, 9.5, 10, 10.5}, {9.8, 10.0}, 10},
  };
  const auto manager = make(1041);
  for (const auto& c : cases) {
    auto font = std::make_shared<SnappingFont>(c.sizes);
    std::shared_ptr<Object> object = font;
    manager->ModifyFontForLocale(object);
    EXPECT_EQ(font->Name(), u"Arial") << c.what;
    EXPECT_FALSE(isTrue(font->Bold())) << c.what;
    EXPECT_DOUBLE_EQ(font->Size().toDouble(), c.final) << c.what;
    ASSERT_EQ(font->requested.size(), c.requested.size()) << c.what;
    for (std::size_t i = 0; i < c.requested.size(); ++i) {
      EXPECT_NEAR(font->requested[i], c.requested[i], 1e-4) << c.what << " step " << i;
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
  struct Case {
    std::int32_t number;
    std::vector<Variant> args;
    String text;
  };
  const Case cases[] = {
      {101, {}, u"Not a valid number"},
      {103,
       {Variant(String(u"\r\n")), Variant(String(u": ")), Variant(String(u"1")),
        Variant(String(u"2"))},
       u"You have entered a number\r\nbelow the allowed minimum\r\n\r\nInput Value: 1\r\n"
       u"Limiting Value: 2"},
      {211, {}, u"&More >>"},
      {302, {Variant(String(u"VB6"))}, u"Application name invalid - cannot be 'VB6'"},
      {325,
       {Variant(std::int32_t{7}), Variant(String(u"X.dll"))},
       u"No string located for resource number 7  in X.dll"},
      {326,
       {Variant(String(u"\r\n")), Variant(String(u"C:\\a.ini"))},
       u"Unexpected error (sAppINIFIle): failed to write to the INI file\r\nC:\\a.ini"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(LibraryMessage(c.number, SafeArray(VarType::Variant, 0, c.args)), c.text) << c.number;
  }
  EXPECT_EQ(LibraryString(317), u"Directory '%0' does not exist");
  for (std::int32_t absent : {0, 100, 106, 209, 212, 305, 313, 327}) {
    EXPECT_EQ(test::errorNumber([&] { LibraryString(absent); }), 326) << absent;
  }
}

}  // namespace
}  // namespace orvo::resources
