#include "settings/ini_values.hpp"

#include "files/encoding.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/profile.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/dates.hpp"
#include "runtime/errors.hpp"
#include "runtime/format.hpp"
#include "runtime/numbers.hpp"
#include "runtime/strings.hpp"
#include "settings/app_ini.hpp"
#include "settings/profile.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::settings {

using namespace std::string_view_literals;

namespace {

// UTF-16 LE files, with a BOM or without, are read and written through the wide form.
privateprofile::ProfileForm formOf(enumFileEncoding encoding) {
  return encoding == encUTF16_LE || encoding == encUTF16_LE_NB ? privateprofile::ProfileForm::Wide
                                                               : privateprofile::ProfileForm::Ansi;
}

}  // namespace

privateprofile::ProfileForm formFor(const String& file) {
  return formOf(files::TextFileEncoding(file, files::kDefaultSampleBytes));
}

namespace {

constexpr std::u16string_view kNotFound = u"Not found! This is the default.";
constexpr std::u16string_view kUnusedDefault = u"WeWillNotUseThisValue";
// The buffer the raw reader gives the platform: 2,048 characters, so at most 2,047 come back.
constexpr std::size_t kBufferSize = 2048;
// How much of the buffer the raw reader's error report quotes.
constexpr std::size_t kQuotedBuffer = 64;

String detailLines(const String& file, const String& section, const String& key) {
  return u"File: " + file + u"\r\nSection: " + section + u"\r\nVariable: " + key;
}

// The detailed context trap of the raw procedures and the typed writers.
template <class Details, class Body>
decltype(auto) detailedTrap(std::u16string_view procedure, std::u16string_view context,
                            Details&& details, Body&& body) {
  if (frame::InDevelopmentMode()) return std::forward<Body>(body)();
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    frame::RaiseWithContext(procedure, context, details(),
                            frame::asError(std::current_exception()));
  }
}

const platform::RegionalSettings& regional() {
  static thread_local std::shared_ptr<const platform::RegionalSettings> rs;
  rs = platform::userRegionalSettings();
  return *rs;
}

}  // namespace

String ReadProfileString(const String& File, const String& Section, const String& Key,
                         const String& DefaultText) {
  String buffer;
  // Views of known length: a lookup should not count the letters of its error texts.
  return detailedTrap(
      u"sGetFromINI"sv, u"Unexpected error when retrieving a string value from the INI file"sv,
      [&] {
        return detailLines(File, Section, Key) + u"\r\nText retrieved is shown below\r\n'" +
               buffer + u"'\r\nFirst " +
               runtime::DecimalText(
                   static_cast<std::int64_t>(std::min(buffer.size(), kQuotedBuffer))) +
               u" characters of buffer are shown below\r\n'" + buffer.substr(0, kQuotedBuffer) +
               u"'";
      },
      [&] {
        // The form is formFor's, decided from the one look at the file that also tells
        // whether its parse is still current.
        buffer = privateprofile::GetPrivateProfileString(
            Section, Key, DefaultText, kBufferSize, File, [&](bool exists) {
              return exists ? formOf(files::EncodingOfExistingFile(File))
                            : privateprofile::ProfileForm::Ansi;
            });
        // The platform's answer ends at its first NUL, like the buffer it was written into.
        if (const auto nul = buffer.find(u'\0'); nul != String::npos) buffer.resize(nul);
        // Nothing after this can fail and quote the buffer.
        return String(std::move(buffer));
      });
}

bool WritePrivateProfileString(const String& Section, const String& Key, const String& Value,
                               const String& File) {
  return detailedTrap(
      u"WritePrivateProfileString", u"Unexpected error when writing a string value to the INI file",
      [&] { return detailLines(File, Section, Key) + u"\r\nValue passed: " + Value; },
      [&] {
        return privateprofile::WritePrivateProfileString(&Section, &Key, &Value, File,
                                                         formFor(File));
      });
}

String sGetFromINI(const String& File, const String& Section, const String& Key,
                   const String& Default, VBool* NotFound) {
  return frame::trap(u"sGetFromINI"sv, [&]() -> String {
    if (NotFound != nullptr) *NotFound = VBool::False;
    static const String notFound(kNotFound);
    String text = ReadProfileString(File, Section, Key, notFound);
    // An entry holding the sentence itself reads as missing, by design.
    if (text == kNotFound) {
      if (NotFound != nullptr) *NotFound = VBool::True;
      return Default;
    }
    return text;
  });
}

namespace {

// The text of an entry for a typed getter: trimmed, and missing when empty.
bool typedText(const String& File, const String& Section, const String& Key, String& text,
               VBool* NotFound) {
  VBool missing = VBool::False;
  text = runtime::Trim(sGetFromINI(File, Section, Key, String(kUnusedDefault), &missing));
  if (isTrue(missing) || text.empty()) {
    if (NotFound != nullptr) *NotFound = VBool::True;
    return false;
  }
  if (NotFound != nullptr) *NotFound = VBool::False;
  return true;
}

}  // namespace

VBool bGetFromINI(const String& File, const String& Section, const String& Key, VBool Default,
                  VBool* NotFound) {
  return frame::trap(u"bGetFromINI", [&]() -> VBool {
    String text;
    if (!typedText(File, Section, Key, text, NotFound)) return Default;
    VBool invalid = VBool::False;
    const VBool value = text::bStringToBoolean(text, Default, &invalid);
    if (NotFound != nullptr) *NotFound = invalid;
    if (isTrue(invalid)) frame::LibraryTrace(u"bGetFromINI: invalid entry found: " + text);
    return value;
  });
}

double dGetFromINI(const String& File, const String& Section, const String& Key, double Default,
                   VBool* NotFound) {
  return frame::trap(u"dGetFromINI", [&]() -> double {
    String text;
    if (!typedText(File, Section, Key, text, NotFound)) return Default;
    return text::ValDbl(Variant(text));
  });
}

std::int32_t nGetFromINI(const String& File, const String& Section, const String& Key,
                         std::int32_t Default, VBool* NotFound) {
  return frame::trap(u"nGetFromINI", [&]() -> std::int32_t {
    String text;
    if (!typedText(File, Section, Key, text, NotFound)) return Default;
    return runtime::CLng(runtime::Val(text));
  });
}

Date GetDateFromINI(const String& File, const String& Section, const String& Key, Date Default,
                    VBool* NotFound) {
  return frame::trap(u"GetDateFromINI", [&]() -> Date {
    String text;
    if (!typedText(File, Section, Key, text, NotFound)) return Default;
    const bool digits = text.size() == 8 && std::all_of(text.begin(), text.end(), [](char16_t c) {
                          return c >= u'0' && c <= u'9';
                        });
    if (!digits) {
      frame::LibraryTrace(u"GetDateFromINI: invalid entry found: " + text);
      if (NotFound != nullptr) *NotFound = VBool::True;
      return Default;
    }
    const auto number = [&](std::size_t from, std::size_t count) {
      return static_cast<int>(runtime::Val(std::u16string_view(text).substr(from, count)));
    };
    return runtime::DateSerial(number(0, 4), number(4, 2), number(6, 2));
  });
}

VBool PutToINI(const String& File, const String& Section, const String& Key, const String& Entry) {
  return frame::trap(u"PutToINI", [&]() -> VBool {
    String stored = Entry;
    // Edge blanks survive the platform's trimming only inside quotes, which it strips again.
    if (!Entry.empty() && (Entry.front() == u' ' || Entry.back() == u' ')) {
      stored = text::AddQuotesToString(Entry, VBool::False, VBool::False, VBool::False);
    }
    return toVBool(WritePrivateProfileString(Section, Key, stored, File));
  });
}

namespace {

template <class T>
VBool putTyped(std::u16string_view procedure, std::u16string_view context, const String& File,
               const String& Section, const String& Key, const String& passed,
               const String& written) {
  return detailedTrap(
      procedure, context,
      [&] {
        return detailLines(File, Section, Key) + u"\r\nValue passed: " + passed +
               u"\r\nValue written: " + written;
      },
      [&] { return PutToINI(File, Section, Key, written); });
}

}  // namespace

VBool PutBooleanToINI(const String& File, const String& Section, const String& Key, VBool Entry) {
  // Only the true value itself is "True": 1, like every other value, is written "False".
  const String written = Entry == VBool::True ? u"True" : u"False";
  return putTyped<VBool>(u"PutBooleanToINI",
                         u"Unexpected error when writing a Boolean value to the INI file", File,
                         Section, Key, runtime::CStr(Variant(Entry), regional()), written);
}

VBool PutDoubleToINI(const String& File, const String& Section, const String& Key, double Entry) {
  const String written = runtime::Trim(runtime::CStr(Variant(Entry), regional()));
  return putTyped<double>(u"PutDoubleToINI",
                          u"Unexpected error when writing a double value to the INI file", File,
                          Section, Key, written, written);
}

VBool PutLongToINI(const String& File, const String& Section, const String& Key,
                   std::int32_t Entry) {
  const String written = runtime::DecimalText(Entry);
  return putTyped<std::int32_t>(u"PutLongToINI",
                                u"Unexpected error when writing an integer value to the INI file",
                                File, Section, Key, written, written);
}

VBool PutDateToINI(const String& File, const String& Section, const String& Key, Date Entry) {
  return frame::trap(u"PutDateToINI", [&]() -> VBool {
    const runtime::DateParts parts = runtime::splitDate(Entry);
    const auto& rs = regional();
    const String written = runtime::Format(Variant(std::int32_t{parts.year}), u"0000", rs) +
                           runtime::Format(Variant(std::int32_t{parts.month}), u"00", rs) +
                           runtime::Format(Variant(std::int32_t{parts.day}), u"00", rs);
    return PutToINI(File, Section, Key, written);
  });
}

namespace {

// The file of a read-or-create operation: the caller's, or the application INI file.
String fileFor(const String& INIFile) {
  return text::LenTrim(INIFile) > 0 ? runtime::Trim(INIFile) : sAppINIFile();
}

}  // namespace

String ReadWriteINIString(const String& Section, const String& Key, const String& Default,
                          const String& INIFile) {
  return frame::trap(u"ReadWriteINIString", [&]() -> String {
    const String file = fileFor(INIFile);
    VBool notFound = VBool::False;
    String value = sGetFromINI(file, Section, Key, Default, &notFound);
    if (isTrue(notFound)) PutToINI(file, Section, Key, value);
    return value;
  });
}

VBool ReadWriteINIBoolean(const String& Section, const String& Key, VBool Default,
                          const String& INIFile) {
  return frame::trap(u"ReadWriteINIBoolean", [&]() -> VBool {
    const String file = fileFor(INIFile);
    VBool notFound = VBool::False;
    const VBool value = bGetFromINI(file, Section, Key, Default, &notFound);
    if (isTrue(notFound)) PutBooleanToINI(file, Section, Key, value);
    return value;
  });
}

double ReadWriteINIDouble(const String& Section, const String& Key, double Default,
                          const String& INIFile) {
  return frame::trap(u"ReadWriteINIDouble", [&]() -> double {
    const String file = fileFor(INIFile);
    VBool notFound = VBool::False;
    const double value = dGetFromINI(file, Section, Key, Default, &notFound);
    if (isTrue(notFound)) PutDoubleToINI(file, Section, Key, value);
    return value;
  });
}

std::int32_t ReadWriteINILong(const String& Section, const String& Key, std::int32_t Default,
                              const String& INIFile) {
  return frame::trap(u"ReadWriteINILong", [&]() -> std::int32_t {
    const String file = fileFor(INIFile);
    VBool notFound = VBool::False;
    const std::int32_t value = nGetFromINI(file, Section, Key, Default, &notFound);
    if (isTrue(notFound)) PutLongToINI(file, Section, Key, value);
    return value;
  });
}

Date ReadWriteINIDate(const String& Section, const String& Key, Date Default,
                      const String& INIFile) {
  return frame::trap(u"ReadWriteINIDate", [&]() -> Date {
    const String file = fileFor(INIFile);
    VBool notFound = VBool::False;
    const Date value = GetDateFromINI(file, Section, Key, Default, &notFound);
    if (isTrue(notFound)) PutDateToINI(file, Section, Key, value);
    return value;
  });
}

}  // namespace orvo::settings

namespace orvo {

std::vector<String> ProfileSectionNames(const String& file) {
  const auto snapshot = settings::privateprofile::ProfileSnapshot::read(file);
  return snapshot ? snapshot->sectionNames() : std::vector<String>{};
}

std::optional<std::vector<std::pair<String, String>>> ProfileSection(const String& file,
                                                                     const String& section) {
  const auto snapshot = settings::privateprofile::ProfileSnapshot::read(file);
  if (!snapshot) return std::nullopt;
  return snapshot->section(section);
}

std::optional<String> ProfileValue(const String& file, const String& section, const String& key) {
  const auto snapshot = settings::privateprofile::ProfileSnapshot::read(file);
  if (!snapshot) return std::nullopt;
  return snapshot->value(section, key);
}

bool ProfileWrite(const String& file, const String& section, const String* key, const String* value,
                  std::uint32_t* lastError) {
  return settings::privateprofile::WritePrivateProfileString(&section, key, value, file,
                                                             settings::formFor(file), lastError);
}

}  // namespace orvo
