#include "system/spreadsheet.hpp"

#include <array>
#include <chrono>

#include "frame/parent_app.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/calc.hpp"
#include "platform/codepage.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "settings/app_ini.hpp"
#include "settings/ini_values.hpp"
#include "system/locale_queries.hpp"

namespace orvo::system {

namespace {

constexpr std::int32_t kCannotCreateObject = 429;
constexpr std::int32_t kInvalidCall = 5;

// Calc reads numbers with the separators of the language the import names. A pair of separators
// chooses the first language that writes numbers so; the usual pairs are settled first.
std::int32_t languageForSeparators(const String& decimal, const String& thousands) {
  static constexpr std::array<std::int32_t, 6> kUsual = {1033, 1031, 1036, 2055, 1049, 3082};
  const auto matches = [&](std::int32_t lcid) {
    return GetUserLocaleInfo(kDecimalSeparator, lcid) == decimal &&
           GetUserLocaleInfo(kThousandSeparator, lcid) == thousands;
  };
  for (const std::int32_t lcid : kUsual) {
    if (matches(lcid)) return lcid;
  }
  const auto all = AvailableLCIDs();
  const auto rs = platform::userRegionalSettings();
  for (std::int32_t i = 1; i <= all->Count(); ++i) {
    const std::int32_t lcid = runtime::CLngV(all->Item(Variant(i)), *rs);
    if (matches(lcid)) return lcid;
  }
  // No language writes them so: the decimal separator decides between the two usual ones.
  return decimal == u"," ? 1031 : 1033;
}

// Calc's number for the file's character set: Unicode files by their encoding, ANSI files by the
// system's code page, which is how the platform's import read them.
String calcCharset(enumFileEncoding encoding) {
  switch (encoding) {
    case encUTF8_NB:
    case encUTF8_BOM:
      return u"76";
    case encUTF16_LE:
    case encUTF16_LE_NB:
    case encUTF16_BE:
    case encUTF16_BE_NB:
      return u"65535";
    default:
      break;
  }
  // Windows code pages in Calc's numbering.
  struct Page {
    std::uint32_t codePage;
    std::u16string_view number;
  };
  static constexpr std::array<Page, 10> kPages = {{{1252, u"1"},
                                                   {1250, u"33"},
                                                   {1251, u"34"},
                                                   {1253, u"35"},
                                                   {1254, u"36"},
                                                   {1255, u"37"},
                                                   {1256, u"38"},
                                                   {1257, u"39"},
                                                   {874, u"71"},
                                                   {932, u"60"}}};
  const std::uint32_t page = platform::systemAnsiCodePage();
  for (const auto& p : kPages) {
    if (p.codePage == page) return String(p.number);
  }
  return u"1";
}

void showFailure(const String& what, const Error& error, VBool suppress, VBool useIni) {
  if (suppress == VBool::False) {
    userInterface()->messageBox(u"Unexpected Error (RunOrRestoreExcel): " + what + u"\r\nError " +
                                    runtime::DecimalText(error.number()) + u": " +
                                    error.description(),
                                frame::sParentAppTitle(), vbCritical | vbOKOnly);
  }
  if (useIni != VBool::False) {
    settings::PutBooleanToINI(settings::sAppINIFile(), u"Excel", u"Installed", VBool::False);
  }
}

}  // namespace

DelimitedImport delimiterFlags(const Variant& fieldDelimiter) {
  DelimitedImport import;
  const String text = runtime::CStr(fieldDelimiter, *platform::userRegionalSettings());
  if (text == u"\t") {
    import.tab = true;
  } else if (text == u";") {
    import.semicolon = true;
  } else if (text == u",") {
    import.comma = true;
  } else if (text == u" ") {
    import.space = true;
    import.consecutiveDelimiter = true;
  } else {
    import.other = true;
    import.otherChar = text;
  }
  return import;
}

String calcImportOptions(const DelimitedImport& import, enumFileEncoding encoding) {
  String separators;
  const auto add = [&](bool on, std::int32_t code) {
    if (!on) return;
    if (!separators.empty()) separators += u'/';
    separators += runtime::DecimalText(code);
  };
  add(import.tab, 9);
  add(import.semicolon, 59);
  add(import.comma, 44);
  add(import.space, 32);
  // Excel takes the first character of OtherChar.
  add(import.other && !import.otherChar.empty(),
      import.otherChar.empty() ? 0 : import.otherChar[0]);
  if (import.consecutiveDelimiter) separators += separators.empty() ? u"MRG" : u"/MRG";
  String qualifier;
  if (import.textQualifier == 1) qualifier = u"34";
  if (import.textQualifier == 2) qualifier = u"39";
  const std::int32_t language =
      languageForSeparators(import.decimalSeparator, import.thousandsSeparator);
  // Separators, qualifier, character set, first line, no column formats, the language, quoted
  // fields not forced to text, and numbers with thousands separators recognised.
  return u"Text - txt - csv (StarCalc):" + separators + u',' + qualifier + u',' +
         calcCharset(encoding) + u",1,," + runtime::DecimalText(language) + u",false,true";
}

VBool RunOrRestoreExcel(std::shared_ptr<Object>* objExcel, VBool SuppressWarning, VBool UseINIFile,
                        std::int32_t WindowState) {
  return frame::trap(u"RunOrRestoreExcel", [&] {
    auto app = std::make_shared<SpreadsheetApplication>();
    if (attachCalc(*app)) {
      if (app->WindowState() == xlMinimized) {
        // A request for minimised restores a minimised program: it was always so.
        app->WindowState(WindowState == 2 ? xlMaximized : xlNormal);
      }
    } else {
      const platform::CalcStart started = platform::startCalc(WindowState != 0 && WindowState != 2);
      if (started != platform::CalcStart::Started || !attachCalc(*app, std::chrono::seconds(60))) {
        const Error error(kCannotCreateObject,
                          String(runtime::standardErrorText(kCannotCreateObject)));
        showFailure(
            u"Could not create an instance of Excel.\r\nMake sure it is installed properly on "
            u"this computer",
            error, SuppressWarning, UseINIFile);
        return VBool::False;
      }
      app->WindowState(WindowState == 0 ? xlNormal : WindowState == 2 ? xlMaximized : xlMinimized);
      app->Visible(VBool::True);
    }
    SafeAppActivate(calcCaption(*app));
    if (objExcel != nullptr) *objExcel = app;
    return VBool::True;
  });
}

void OpenInExcel(const String& File, const Variant& FieldDelimiter, VBool USFormat,
                 VBool SuppressWarning, VBool UseINIFile, std::int32_t WindowState) {
  frame::trap(u"OpenInExcel", [&] {
    std::shared_ptr<Object> object;
    if (RunOrRestoreExcel(&object, SuppressWarning, UseINIFile, WindowState) == VBool::False) {
      return;
    }
    auto app = std::static_pointer_cast<SpreadsheetApplication>(object);
    DelimitedImport import = delimiterFlags(FieldDelimiter);
    if (USFormat == VBool::False) {
      import.decimalSeparator = GetDecimalSeparator();
      import.thousandsSeparator = GetThousandSeparator();
    }
    const auto flag = [](bool on) { return on ? VBool::True : VBool::False; };
    app->OpenText(File, 1, 1, flag(import.consecutiveDelimiter), flag(import.tab),
                  flag(import.semicolon), flag(import.comma), flag(import.space),
                  flag(import.other), import.otherChar, import.decimalSeparator,
                  import.thousandsSeparator);
    app->Visible(VBool::True);
  });
}

void SafeAppActivate(const String& Title) {
  try {
    const auto d = desktop();
    const String wanted = runtime::LCase(Title);
    WindowHandle found = 0;
    // As the language's AppActivate: the exact title first, else one that begins with it.
    for (const bool exact : {true, false}) {
      for (const WindowHandle w : d->topLevelWindows()) {
        if (!d->isWindowVisible(w)) continue;
        const String title = runtime::LCase(d->windowTitle(w));
        if (exact ? title == wanted : title.starts_with(wanted)) {
          found = w;
          break;
        }
      }
      if (found != 0) break;
    }
    if (found == 0 || Title.empty()) runtime::raise(kInvalidCall);
    d->activateWindow(found);
    d->raiseWindow(found);
  } catch (const Error& e) {
    frame::LibraryTrace(u"SafeAppActivate: error " + runtime::DecimalText(e.number()) + u": " +
                        e.description());
  }
}

}  // namespace orvo::system
