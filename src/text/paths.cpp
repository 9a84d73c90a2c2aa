#include "text/paths.hpp"

#include <algorithm>
#include <limits>
#include <string_view>

#include "frame/traps.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/path_compact.hpp"

namespace orvo::text {

namespace {

constexpr std::u16string_view kSeparators = u"\\/";

bool isSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

// A separator added to text follows the text's own style: "/" only for text written with
// forward slashes alone, so that Windows-style and style-less paths come out as they always did.
char16_t separatorFor(std::u16string_view text) {
  const bool forward = text.find(u'/') != std::u16string_view::npos;
  const bool back = text.find(u'\\') != std::u16string_view::npos;
  return forward && !back ? u'/' : u'\\';
}

// The file layer's path-without-backslash: a drive root such as "C:\" keeps its separator.
String withoutTrailingSeparator(String path) {
  if (path.empty() || !isSeparator(path.back())) return path;
  if (path.size() >= 2 && path[path.size() - 2] == u':') return path;
  path.pop_back();
  return path;
}

std::size_t driveLength(std::u16string_view s) {
  const auto colon = s.find(u':');
  if (colon != std::u16string_view::npos) return colon + 1;
  if (s.size() >= 2 && isSeparator(s[0]) && isSeparator(s[1])) {
    // "\\server\share": up to the separator after the share name.
    const auto afterServer = s.find_first_of(kSeparators, 2);
    if (afterServer == std::u16string_view::npos) return s.size();
    const auto afterShare = s.find_first_of(kSeparators, afterServer + 1);
    if (afterShare == std::u16string_view::npos) return s.size();
    return afterShare;
  }
  return 0;
}

}  // namespace

void SplitPath(const String& FullPath, String* Drive, String* Dir, String* Name,
               String* Extension) {
  for (String* out : {Drive, Dir, Name, Extension}) {
    if (out != nullptr) out->clear();
  }
  const std::u16string_view s = runtime::trimView(FullPath);
  if (s.empty()) return;
  // Lengths and positions were 16-bit integers.
  if (s.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
    runtime::raise(runtime::errOverflow);
  }

  const std::size_t drive = driveLength(s);
  if (Drive != nullptr) *Drive = String(s.substr(0, drive));
  std::u16string_view rest = s.substr(drive);
  if (rest.empty()) return;

  const auto lastSeparator = rest.find_last_of(kSeparators);
  if (lastSeparator != std::u16string_view::npos) {
    if (Dir != nullptr) *Dir = String(rest.substr(0, lastSeparator + 1));
    rest = rest.substr(lastSeparator + 1);
  }
  if (rest.empty()) return;

  const auto dot = rest.rfind(u'.');
  if (dot == std::u16string_view::npos) {
    if (Name != nullptr) *Name = runtime::Trim(rest);
    return;
  }
  if (Name != nullptr) *Name = String(rest.substr(0, dot));
  if (Extension != nullptr) *Extension = String(rest.substr(dot));
}

void MakePath(String& FullPath, const String& Drive, const String& Dir, const String& Name,
              const String& Extension) {
  String drive = runtime::Trim(Drive);
  String dir = runtime::Trim(Dir);
  const String name = runtime::LTrim(Name);
  String extension = runtime::RTrim(Extension);

  if (!drive.empty()) {
    if (drive.size() >= 2 && isSeparator(drive[0]) && isSeparator(drive[1])) {
      drive = withoutTrailingSeparator(std::move(drive));
    } else {
      // Whatever follows the letter goes: "C:\" and "Cxyz" both give "C:".
      drive = String(1, drive[0]) + u":";
    }
  }
  if (!dir.empty()) {
    dir = PathWithBackslash(dir);
    // A relative folder is made rooted on purpose: the callers build absolute paths only.
    if (!isSeparator(dir.front())) dir.insert(dir.begin(), separatorFor(dir));
  }
  if (!extension.empty() && extension.front() != u'.') extension.insert(extension.begin(), u'.');
  FullPath = drive + dir + name + extension;
}

String PathWithBackslash(const String& Path) {
  String path = runtime::Trim(Path);
  if (path.empty() || isSeparator(path.back())) return path;
  path.push_back(separatorFor(path));
  return path;
}

String LongDirFix(const String& Path, std::int16_t MaxTotalLength) {
  return frame::trap(u"LongDirFix", [&] {
    String s = runtime::Trim(Path);
    constexpr std::int32_t kMaxPath = 260;
    if (static_cast<std::int64_t>(s.size()) <= MaxTotalLength && MaxTotalLength < kMaxPath) {
      return s;
    }
    // The compaction wrote into a buffer of MAX_PATH + 1 characters, which caps the limit it was
    // given; a negative length became an empty limit.
    const std::uint32_t cchMax =
        MaxTotalLength < 0
            ? 0U
            : static_cast<std::uint32_t>(std::min<std::int32_t>(MaxTotalLength + 1, kMaxPath + 1));
    return PathCompactPathEx(s, cchMax);
  });
}

}  // namespace orvo::text
