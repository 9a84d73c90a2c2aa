#include "settings/ini_values.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"
#include "runtime/dates.hpp"
#include "settings/app_ini.hpp"
#include "settings/profile.hpp"
#include "support/test_support.hpp"

namespace orvo::settings {
namespace {

using test::show;

class IniValues : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    frame::StaticGlobals::instance().resetForTesting();
    frame::InitialiseParentAppProperties(fromUtf8(dir_.string()), u"Model");
  }
  void TearDown() override {
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
  test::ScopedLocale english_{"en_US.UTF-8"};
};

TEST_F(IniValues, TypedGettersAndTheirNotFoundFlag) {
  const auto data = test::readFileAndCases("settings/ini_getters.tsv", 5);
  const String ini = write("typed.ini", data.bytes + "long=" + std::string(3000, 'x') + "\r\n");
  EXPECT_EQ(sGetFromINI(ini, u"S", u"long", u"").size(), 2047U);
  EXPECT_EQ(test::errorNumber([&] { (void)nGetFromINI(ini, u"S", u"huge", 0); }), 6);
  auto get = [&](const String& getter, const String& key, const Variant& d, VBool* nf) -> Variant {
    if (getter == u"s") return sGetFromINI(ini, u"S", key, *d.get<String>(), nf);
    if (getter == u"n") return nGetFromINI(ini, u"S", key, *d.get<std::int32_t>(), nf);
    if (getter == u"b") return bGetFromINI(ini, u"S", key, *d.get<VBool>(), nf);
    if (getter == u"d") return dGetFromINI(ini, u"S", key, *d.get<double>(), nf);
    return GetDateFromINI(ini, u"S", key, *d.get<Date>(), nf);
  };
  test::TraceCapture trace;
  for (const auto& row : data.cases) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    VBool notFound = VBool::False;
    test::expectCall(row, f[3], [&] { return get(f[0], f[1], test::typedValue(f[2]), &notFound); });
    if (!f[4].empty()) {
      EXPECT_EQ(isTrue(notFound), f[4] == u"1");
    }
  }
  const std::vector<String> expected = {u"bGetFromINI: invalid entry found: maybe",
                                        u"GetDateFromINI: invalid entry found: 2024-1-5",
                                        u"GetDateFromINI: invalid entry found: 2024011"};
  EXPECT_EQ(trace.messages(), expected);
}

TEST_F(IniValues, StoredForms) {
  const String ini = path("forms.ini");
  EXPECT_TRUE(isTrue(PutToINI(ini, u"S", u"padded", u" a b ")));
  EXPECT_TRUE(isTrue(PutToINI(ini, u"S", u"plain", u"a b")));
  EXPECT_TRUE(isTrue(PutBooleanToINI(ini, u"S", u"minus1", VBool::True)));
  EXPECT_TRUE(isTrue(PutBooleanToINI(ini, u"S", u"one", static_cast<VBool>(1))));
  EXPECT_TRUE(isTrue(PutDoubleToINI(ini, u"S", u"d", 0.1 + 0.2)));
  EXPECT_TRUE(isTrue(PutLongToINI(ini, u"S", u"n", -42)));
  const Date when{runtime::DateSerial(2024, 3, 5).serial + 14.5 / 24};
  EXPECT_TRUE(isTrue(PutDateToINI(ini, u"S", u"date", when)));
  EXPECT_EQ(read("forms.ini"),
            "[S]\r\npadded=\" a b \"\r\nplain=a b\r\nminus1=True\r\none=False\r\n"
            "d=0.3\r\nn=-42\r\ndate=20240305\r\n");
  EXPECT_EQ(sGetFromINI(ini, u"S", u"padded", u""), u" a b ");
  EXPECT_EQ(GetDateFromINI(ini, u"S", u"date", kDefaultINIDate).serial,
            runtime::DateSerial(2024, 3, 5).serial)
      << "the time of day is dropped";
  const test::ScopedLocale german("de_DE.UTF-8");
  EXPECT_TRUE(isTrue(PutDoubleToINI(ini, u"S", u"d", 1.5)));
  EXPECT_NE(read("forms.ini").find("d=1,5\r\n"), std::string::npos)
      << "the user's decimal separator";
}

TEST_F(IniValues, UnicodeFilesUseTheWideForm) {
  const String wide = write("wide.ini", std::string("\xFF\xFE[\0S\0]\0\r\0\n\0", 12));
  EXPECT_TRUE(isTrue(PutToINI(wide, u"S", u"k", u"\u00e9\u3042")));
  EXPECT_EQ(sGetFromINI(wide, u"S", u"k", u""), u"\u00e9\u3042");
  const String ansi = write("ansi.ini", "[S]\r\n");
  EXPECT_TRUE(isTrue(PutToINI(ansi, u"S", u"k", u"\u00e9\u3042")));
  EXPECT_EQ(read("ansi.ini"), "[S]\r\nk=\xE9?\r\n");
  EXPECT_EQ(sGetFromINI(ansi, u"S", u"k", u""), u"\u00e9?");
}

TEST_F(IniValues, ReadOrCreateFillsTheFile) {
  const String ini = write("rw.ini", "[S]\r\nempty=\r\nkept=5\r\nbad=maybe\r\n");
  EXPECT_EQ(ReadWriteINILong(u"S", u"empty", 9, u"  " + ini + u"  "), 9);
  EXPECT_EQ(ReadWriteINILong(u"S", u"kept", 9, ini), 5);
  EXPECT_EQ(ReadWriteINIBoolean(u"S", u"bad", VBool::True, ini), VBool::True);
  EXPECT_EQ(ReadWriteINIString(u"T", u"s", u" x ", ini), u" x ");
  EXPECT_DOUBLE_EQ(ReadWriteINIDouble(u"T", u"d", 2.5, ini), 2.5);
  EXPECT_EQ(ReadWriteINIDate(u"T", u"date", runtime::DateSerial(2020, 2, 29), ini).serial,
            runtime::DateSerial(2020, 2, 29).serial);
  EXPECT_EQ(read("rw.ini"),
            "[S]\r\nempty=9\r\nkept=5\r\nbad=True\r\n[T]\r\ns=\" x \"\r\nd=2.5\r\n"
            "date=20200229\r\n");
  // Without a file: the application INI file, created with its dated comment.
  EXPECT_EQ(ReadWriteINILong(u"App", u"n", 3, u"   "), 3);
  const std::string app = read("Model.ini");
  EXPECT_EQ(app.rfind("[NOTES]\r\nComment=This INI file created by default (sAppINIFile) on ", 0),
            0U)
      << app;
  EXPECT_NE(app.find(" at "), std::string::npos);
  EXPECT_NE(app.find("\r\n[App]\r\nn=3\r\n"), std::string::npos) << app;
}

TEST_F(IniValues, TheApplicationINIFile) {
  const String base = fromUtf8(dir_.string()) + u"/";
  INI ini;
  String found = u"x";
  EXPECT_EQ(ini.FindINI(found), VBool::False);
  EXPECT_EQ(found, u"") << "the class form returns no path for a missing file";
  EXPECT_EQ(FindINI(found, u"Other", VBool::False, VBool::True), VBool::False);
  EXPECT_EQ(found, base + u"Other.ini");
  EXPECT_EQ(ini.AppINIFile(), base + u"Model.ini");
  EXPECT_TRUE(std::filesystem::exists(dir_ / "Model.ini"));
  EXPECT_EQ(ini.FindINI(found), VBool::True);

  test::TraceCapture trace;
  const std::pair<String, String> cases[] = {{u" Special.cfg ", u"Special.cfg"},
                                             {base + u"sub.ini", u"sub.ini"},
                                             {u"Bare", u"Bare.ini"},
                                             {u".", u"Model.ini"}};
  for (const auto& [setting, file] : cases) {
    ini.SetAppINIFile(setting);
    EXPECT_EQ(ini.AppINIFile(), base + file) << show(setting);
  }
  ASSERT_FALSE(trace.messages().empty());
  EXPECT_EQ(trace.messages().front(),
            u"SetAppINIFile has set application INI file to: 'Special.cfg'");
  EXPECT_EQ(trace.messages().back(), u"SetAppINIFile has set application INI file to: ''");

  test::ScopedRecordingUserInterface ui;
  ini.DisplayINIFileForThisApp();
  ini.SetAppINIFile(u"Absent");
  EXPECT_EQ(ini.FindINI(found, u"", VBool::True), VBool::False);
  ini.DisplayINIFileForThisApp();
  ASSERT_EQ(ui->boxes.size(), 3U);
  EXPECT_EQ(ui->boxes[0].text,
            u"This application (Model) is using the following INItialisation file\r\n" + base +
                u"Model.ini");
  EXPECT_EQ(ui->boxes[0].style, vbInformation);
  EXPECT_EQ(ui->boxes[1].text,
            u"The following initialisation file could not be found\r\n" + base + u"Absent.ini");
  EXPECT_EQ(ui->boxes[1].style, vbExclamation);
  EXPECT_EQ(ui->boxes[2].text, u"No initialisation (.INI) file found for this application (Model)");
  EXPECT_FALSE(std::filesystem::exists(dir_ / "Absent.ini")) << "displaying creates nothing";

  ini.SetAppINIFile(base + u"no/such/dir/app.ini");
  const Error e = test::errorOf([&] { (void)ini.AppINIFile(); });
  EXPECT_EQ(e.number(), static_cast<std::int32_t>(0x8004F145U));
  EXPECT_EQ(e.description(),
            u"Unexpected error (sAppINIFIle): failed to write to the INI file\r\n" + base +
                u"no/such/dir/app.ini");
}

}  // namespace
}  // namespace orvo::settings
