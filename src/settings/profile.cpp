#include "settings/profile.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/codepage.hpp"
#include "platform/file.hpp"
#include "platform/last_error.hpp"
#include "platform/whole_file.hpp"
#include "runtime/strings.hpp"
#include "settings/profile_cache.hpp"
#include "settings/profile_document.hpp"
#include "text/same_units.hpp"

// Where the platform's rules were not settled by what it was seen to do, this reader decides
// so, for these reasons:
//  - Lines before the first section belong to no section: the platform keeps such bytes
//    untouched when it writes, which it would not do for a section it could find keys in.
//  - A comment line is never a key, whatever is asked: a lookup of ";key" finding a
//    commented-out setting would undo the user's edit.
//  - A UTF-8 file with a BOM is read as UTF-8 and keeps its BOM: read as ANSI, the BOM would
//    glue onto the first header and hide that section, losing settings a user saved from an
//    editor.
//  - A written value is stored as given, edge blanks included (readers trim them again); keys
//    and section names are trimmed, as they are when looked up.
//  - A new key goes after the last line of its section that is not blank, so that the blank
//    lines separating sections stay between them.
//  - The default is returned with trailing blanks removed but not unquoted.
namespace orvo::settings::privateprofile {

namespace {

using detail::ByteLine;
using detail::Document;
using detail::isBlank;
using detail::Line;
using detail::LineEdit;
using detail::LineKind;
using detail::upper;

bool allAscii(std::u16string_view s) {
  return std::all_of(s.begin(), s.end(), [](char16_t c) { return c < 0x80; });
}

String throughAnsi(std::u16string_view s, ProfileForm form) {
  if (form == ProfileForm::Wide || allAscii(s)) return String(s);
  const std::uint32_t acp = platform::systemAnsiCodePage();
  return platform::multiByteToWide(acp, platform::wideToMultiByte(acp, s));
}

String throughAnsi(String&& s, ProfileForm form) {
  if (form == ProfileForm::Wide || allAscii(s)) return std::move(s);
  return throughAnsi(std::u16string_view(s), form);
}

// A section or key name as it is looked up: through the ANSI code page for the narrow form,
// then blanks trimmed and upper-cased; in a buffer of the thread's, which keeps its room from
// one lookup to the next.
std::u16string_view lookupName(std::u16string_view name, ProfileForm form, String& buffer) {
  const auto trimmedUpper = [&buffer](std::u16string_view from) {
    std::size_t b = 0;
    std::size_t e = from.size();
    while (b < e && isBlank(from[b])) ++b;
    while (e > b && isBlank(from[e - 1])) --e;
    // Written from the front, so that a converted name can be upper-cased where it lies.
    buffer.resize(std::max(buffer.size(), e - b));
    char16_t seen = 0;
    for (std::size_t i = b; i < e; ++i) {
      seen |= from[i];
      buffer[i - b] = detail::upperFast(from[i]);
    }
    buffer.resize(e - b);
    return seen;
  };
  // Nearly every name is ASCII, which every ANSI code page keeps as it is: one pass serves.
  if (trimmedUpper(name) < 0x80 || form == ProfileForm::Wide) return buffer;
  buffer = throughAnsi(name, form);
  trimmedUpper(buffer);
  return buffer;
}

// The system's form of the last file named on this thread: a program reading many values
// names the same file again and again.
const platform::NativePath& nativePathOf(const String& file) {
  thread_local String lastFile;
  thread_local platform::NativePath lastPath;
  if (lastPath.empty() || !text::sameUnits(file, lastFile)) {
    lastPath = platform::NativePath(file);
    lastFile = file;
  }
  return lastPath;
}

// Moving a parse's index along holds the old parse and the new one at once: above this, the
// old one is let go first and the new one built afresh, so that a write of a large file stays
// within the memory a read of it takes.
constexpr std::size_t kLargestEditedParse = std::size_t{32} << 20;

String trimBlanks(std::u16string_view s) {
  std::size_t b = 0;
  std::size_t e = s.size();
  while (b < e && isBlank(s[b])) ++b;
  while (e > b && isBlank(s[e - 1])) --e;
  return String(s.substr(b, e - b));
}

// The value as returned: one pair of enclosing quotes of the same kind removed.
String unquote(String value) {
  if (value.size() >= 2 && value.front() == value.back() &&
      (value.front() == u'"' || value.front() == u'\'')) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

}  // namespace

String GetPrivateProfileString(const String& section, const String& key, const String& defaultText,
                               std::size_t bufferSize, const String& file, ProfileForm form,
                               bool* found) {
  return GetPrivateProfileString(
      section, key, defaultText, bufferSize, file, [form](bool) { return form; }, found);
}

String GetPrivateProfileString(const String& section, const String& key, const String& defaultText,
                               std::size_t bufferSize, const String& file,
                               const std::function<ProfileForm(bool exists)>& formOf, bool* found) {
  if (found != nullptr) *found = false;
  const auto cut = [&](String s) {
    if (bufferSize == 0) return String();
    if (s.size() > bufferSize - 1) s.resize(bufferSize - 1);
    return s;
  };
  bool exists = false;
  const auto document = file.empty() ? nullptr : loadDocument(nativePathOf(file), &exists);
  const ProfileForm form = formOf(exists);
  const auto fallback = [&] {
    String text = throughAnsi(defaultText, form);
    while (!text.empty() && isBlank(text.back())) text.pop_back();
    return cut(std::move(text));
  };
  if (document == nullptr) return fallback();
  thread_local String sectionBuffer;
  thread_local String keyBuffer;
  const auto s = document->findSection(lookupName(section, form, sectionBuffer));
  if (!s) return fallback();
  const auto line = document->findKey(*s, lookupName(key, form, keyBuffer));
  if (!line) return fallback();
  if (found != nullptr) *found = true;
  return cut(throughAnsi(unquote(document->text(line->valueBegin, line->valueEnd)), form));
}

bool WritePrivateProfileString(const String* section, const String* key, const String* value,
                               const String& file, ProfileForm form, std::uint32_t* lastError) {
  std::uint32_t error = 0;
  const auto fail = [&](std::uint32_t e) {
    platform::setLastError(e);
    if (lastError != nullptr) *lastError = e;
    return false;
  };
  if (section == nullptr) return fail(platform::kErrorFileNotFound);
  if (file.empty()) return fail(platform::kErrorAccessDenied);
  const platform::NativePath path = platform::writeTarget(platform::NativePath(file));
  const std::uint32_t acp = platform::systemAnsiCodePage();
  const String sectionName = trimBlanks(throughAnsi(*section, form));
  const String keyName = key != nullptr ? trimBlanks(throughAnsi(*key, form)) : String();
  const String newValue = value != nullptr ? throughAnsi(*value, form) : String();

  platform::WriterLock lock;
  if (!lock.acquire(path, error)) return fail(error);
  // Watched before the read: a change by another process from here on is seen by the next
  // lookup, whatever this writer makes of the bytes.
  WatchedSince watched = watchSettingsFile(path);
  // Under the lock the file is always read again: a stamp can miss a change made within one
  // tick of the clock, and a write built on a stale copy would undo another process's write.
  auto bytes = platform::readWholeFile(path, nullptr, error);
  if (!bytes) {
    if (error != platform::kErrorFileNotFound) return fail(error);
    // Deleting from a file that does not exist succeeds without creating it.
    if (key == nullptr || value == nullptr) return true;
    bytes.emplace();
  }
  if (bytes->size() >= detail::kLargestFile) return fail(platform::kErrorNotEnoughMemory);
  auto known = cachedDocument(path);
  auto document = known != nullptr && stillValid(*known) && known->raw() == *bytes
                      ? known
                      : std::make_shared<const Document>(std::move(*bytes), acp);
  const std::string& raw = document->raw();
  const String crlf = u"\r\n";
  std::string updated;
  String insertedText;
  std::string insertedBytes;
  // The edit in units of the text, for moving the index along; none for a removal.
  std::optional<LineEdit> edit;
  const auto splice = [&](std::size_t from, std::size_t to, std::string_view with) {
    updated.reserve(raw.size() - (to - from) + with.size() + 1);
    updated.append(raw, 0, from);
    // A UTF-16 file of odd length ends in half a unit: what is added after it starts on the
    // next unit, or it would read as other characters. The half unit is kept, made whole.
    if (document->wide() && from % 2 != 0) updated.push_back('\0');
    updated.append(with);
    updated.append(raw, to, std::string::npos);
  };

  const auto s = document->findSection(upper(sectionName));
  if (key == nullptr || value == nullptr) {
    if (!s) return true;
    if (key == nullptr) {
      splice(document->byteOf(s->header), document->byteOf(s->end), {});
    } else {
      const auto line = document->findKey(*s, upper(keyName));
      if (!line) return true;
      const ByteLine at = document->bytesOf(*line);
      splice(at.begin, at.next, {});
    }
  } else if (s) {
    const auto line = document->findKey(*s, upper(keyName));
    if (line) {
      // The stored value already reads as written: the file is left alone.
      if (document->text(line->valueBegin, line->valueEnd) == newValue) return true;
      insertedText = document->text(line->nameBegin, line->nameEnd) + u"=" + newValue;
      insertedBytes = document->encode(insertedText);
      const ByteLine at = document->bytesOf(*line);
      splice(at.begin, at.end, insertedBytes);
      edit.emplace();
      edit->at = line->begin;
      edit->removed = line->end - line->begin;
    } else {
      // After the section's last line that is not blank, so that blank lines separating it
      // from the next section stay where they are.
      Line after = document->lineAt(s->header);
      for (std::size_t pos = after.next; pos < s->end;) {
        const Line l = document->lineAt(pos);
        if (l.kind != LineKind::Blank) after = l;
        pos = l.next;
      }
      const String prefix = after.next == after.end ? crlf : String();
      insertedText = prefix + keyName + u"=" + newValue + crlf;
      insertedBytes = document->encode(insertedText);
      const std::size_t at = document->bytesOf(after).next;
      splice(at, at, insertedBytes);
      edit.emplace();
      edit->at = after.next;
      edit->newKeyAt = after.next + document->unitsOf(prefix);
      edit->section = s->number;
    }
  } else {
    const String prefix = document->endsWithTerminator() ? String() : crlf;
    const String header = u"[" + sectionName + u"]" + crlf;
    insertedText = prefix + header + keyName + u"=" + newValue + crlf;
    insertedBytes = document->encode(insertedText);
    splice(raw.size(), raw.size(), insertedBytes);
    edit.emplace();
    edit->at = document->textSize();
    edit->newSectionAt = document->textSize() + document->unitsOf(prefix);
    edit->newKeyAt = *edit->newSectionAt + document->unitsOf(header);
  }
  const std::int64_t writtenAt = platform::stampClockNs();
  const auto version = platform::replaceWholeFile(path, updated, error);
  if (!version) return fail(error);
  std::shared_ptr<const Document> next;
  if (edit) {
    edit->inserted = insertedText;
    edit->insertedBytes = insertedBytes;
  }
  if (edit && document->memoryUse() <= kLargestEditedParse &&
      document->canMoveAlong(*edit, updated.size())) {
    next = document->edited(std::move(updated), *edit);
  } else {
    // The old parse is let go before the new one is made, so that a large file is not held
    // parsed twice.
    forgetDocument(path);
    known.reset();
    document.reset();
    next = std::make_shared<const Document>(std::move(updated), acp);
  }
  rememberDocument(path, *version, std::move(next), writtenAt, std::move(watched));
  return true;
}

std::optional<ProfileSnapshot> ProfileSnapshot::read(const String& file) {
  auto document = loadDocument(platform::NativePath(file));
  if (document == nullptr) return std::nullopt;
  return ProfileSnapshot(std::move(document));
}

std::optional<String> ProfileSnapshot::value(std::u16string_view section,
                                             std::u16string_view key) const {
  const auto s = document_->findSection(upper(trimBlanks(section)));
  if (!s) return std::nullopt;
  const auto line = document_->findKey(*s, upper(trimBlanks(key)));
  if (!line) return std::nullopt;
  return unquote(document_->text(line->valueBegin, line->valueEnd));
}

std::vector<String> ProfileSnapshot::sectionNames() const {
  std::vector<String> names;
  for (std::size_t pos = 0; pos < document_->textSize();) {
    const Line line = document_->lineAt(pos);
    if (line.kind == LineKind::Section)
      names.push_back(document_->text(line.nameBegin, line.nameEnd));
    pos = line.next;
  }
  return names;
}

std::optional<std::vector<std::pair<String, String>>> ProfileSnapshot::section(
    std::u16string_view name) const {
  const auto s = document_->findSection(upper(trimBlanks(name)));
  if (!s) return std::nullopt;
  std::vector<std::pair<String, String>> entries;
  for (std::size_t pos = document_->lineAt(s->header).next; pos < s->end;) {
    const Line line = document_->lineAt(pos);
    pos = line.next;
    if (line.kind != LineKind::Key) continue;
    entries.emplace_back(document_->text(line.nameBegin, line.nameEnd),
                         unquote(document_->text(line.valueBegin, line.valueEnd)));
  }
  return entries;
}

}  // namespace orvo::settings::privateprofile
