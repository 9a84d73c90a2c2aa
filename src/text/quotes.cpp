#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

using runtime::Trim;

}  // namespace

String EncodeQuotes(const String& InputString) { return runtime::Replace(InputString, u"'", u"`"); }

String AddQuotesToString(const String& InputString, VBool TrimInput, VBool TrimInsideQuotes,
                         VBool AddSingleQuotes) {
  const String q = nonZero(AddSingleQuotes) ? u"'" : u"\"";
  String s = nonZero(TrimInput) ? Trim(InputString) : InputString;
  if (s.empty()) return q + q;
  std::size_t before = 0;
  do {
    before = s.size();
    s = RemoveQuotesFromString(s, VBool::False, TrimInsideQuotes);
  } while (s.size() != before);
  return q + s + q;
}

String RemoveQuotesFromString(const String& InputString, VBool TrimInput, VBool TrimInsideQuotes) {
  const String s = nonZero(TrimInput) ? Trim(InputString) : InputString;
  if (s.size() < 2) return InputString;
  const char16_t mark = s.front() == u'\'' ? u'\'' : u'"';
  if (s.front() != mark || s.back() != mark) return InputString;
  const String inside = s.substr(1, s.size() - 2);
  return nonZero(TrimInsideQuotes) ? Trim(inside) : inside;
}

String AddQuotesToPath(const String& InputString) {
  const String t = Trim(InputString);
  if (t.empty()) return {};
  return AddQuotesToString(t, VBool::True, VBool::True, VBool::False);
}

String RemoveQuotesFromPath(const String& InputString) {
  return RemoveQuotesFromString(Trim(InputString), VBool::False, VBool::True);
}

}  // namespace orvo::text
