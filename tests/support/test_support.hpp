#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/trace.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/types.hpp"
#include "orvogeneric/user_interface.hpp"
#include "orvogeneric/variant.hpp"

namespace orvo::test {

// A golden data file recorded from the Windows platform: TAB-separated fields, "#" comments.
// Text fields are unescaped (\\ \t \n \r \0 and \u{HHHH} code units) into UTF-16.
struct GoldenRow {
  std::vector<String> fields;
  int line = 0;
};
std::vector<GoldenRow> readGolden(const std::string& fileName);  // relative to tests/golden
// The same format for the tests' own tables of cases, relative to tests/data.
std::vector<GoldenRow> readTestData(const std::string& fileName);
// The same, each row required to have `columns` fields: a malformed line or a file without rows
// is an error naming it, so that a table cannot shrink unnoticed.
std::vector<GoldenRow> readTestData(const std::string& fileName, std::size_t columns);
// A data file holding a file under test and the cases on it: rows "file<TAB>text" give the file's
// bytes in order (line ends written out, see bytesOf), the other rows are the cases.
struct FileAndCases {
  std::string bytes;
  std::vector<GoldenRow> cases;
};
FileAndCases readFileAndCases(const std::string& fileName, std::size_t caseColumns);
// A whole number in a data field: decimal, or hexadecimal after "0x", with an optional sign.
std::int64_t integerOf(const String& field);
// The parts of a field, each ended by a separator or the end: "" gives none, "a|" one, "|" one
// empty part.
std::vector<String> split(const String& field, char16_t separator);
// A variant in a table: a type's name and, after one blank, the value ("Integer 2", "Long -7",
// "Byte 255", "Single 1.5", "Double 0x1p-3", "Currency 1.0001", "Date 1.5", "Boolean True",
// "Error 5", "String any text"), or the name alone: "Empty", "Null", "Nothing" (no object),
// "String" (no text). "Array" is an array never dimensioned; "Array 5:Long 1|String b" an
// array of variants from lower bound 5, "Array 0:" one without elements.
Variant variantOf(const String& field);
// A VarType by its name.
VarType varTypeOf(const String& name);
// "<none>" in a table stands for no value: an unset variable, an absent result.
inline bool isNone(const String& field) { return field == u"<none>"; }
double parseHexDouble(const String& field);  // C99 "%a" text
// A value written "TYPE text" in a data file: "R8 2.5" (any strtod form), "R4 0.1", "I2 -3",
// "I4 7", "UI1 200", "CY 25000" (scaled by 10000), "DATE 1.5", "BOOL 1" (any number, so that a
// non-canonical true can be written), "BSTR any text", "EMPTY", "NULL".
Variant typedValue(std::string_view type, const String& text);
Variant typedValue(const String& typed);
// Checks a call against a data field: "#n" when it must raise error n, else the value typedValue
// reads. Failures name the data line.
void expectCall(const GoldenRow& row, const String& expected, const std::function<Variant()>& call);
// A field that stands for bytes ("\u{FF}" one byte): each code unit one byte, none above 0xFF.
std::string bytesOf(const String& field);

// Sets one environment variable (nullptr: unsets it) for the object's lifetime, then puts back
// what was there before, set or unset.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value);
  // The value of a table's field: "<none>" unsets the variable.
  ScopedEnvironment(const char* name, const String& field)
      : ScopedEnvironment(name, isNone(field) ? nullptr : toUtf8(field).c_str()) {}
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

// Sets LC_ALL (and clears the cached regional decimal separator) for the test's lifetime.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* localeName);
  ~ScopedLocale();
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

 private:
  ScopedEnvironment lcAll_;
};

// Captures library trace lines for the test's lifetime.
class TraceCapture {
 public:
  TraceCapture();
  ~TraceCapture();
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;
  [[nodiscard]] const std::vector<String>& messages() const { return messages_; }
  [[nodiscard]] const std::vector<String>& prefixes() const { return prefixes_; }

 private:
  std::vector<String> messages_;
  std::vector<String> prefixes_;
  frame::TraceSink previous_;
};

// A user interface that records its message boxes and beeps, installed for the object's
// lifetime.
class RecordingUserInterface final : public UserInterface {
 public:
  struct Box {
    String text;
    String caption;
    std::int32_t style;
  };
  MsgBoxResult messageBox(std::u16string_view text, std::u16string_view caption,
                          std::int32_t style) override {
    boxes.push_back({String(text), String(caption), style});
    return vbOK;
  }
  void beep() override { ++beeps; }
  std::vector<Box> boxes;
  int beeps = 0;
};

class ScopedRecordingUserInterface {
 public:
  ScopedRecordingUserInterface()
      : ui_(std::make_shared<RecordingUserInterface>()), previous_(setUserInterface(ui_)) {}
  ~ScopedRecordingUserInterface() { setUserInterface(previous_); }
  ScopedRecordingUserInterface(const ScopedRecordingUserInterface&) = delete;
  ScopedRecordingUserInterface& operator=(const ScopedRecordingUserInterface&) = delete;
  RecordingUserInterface* operator->() const { return ui_.get(); }

 private:
  std::shared_ptr<RecordingUserInterface> ui_;
  std::shared_ptr<UserInterface> previous_;
};

// Runs body(index) in each of count forked processes at once and waits for them all; true when
// every one returned true. The children leave with _exit, running no test machinery.
bool runInProcesses(int count, const std::function<bool(int)>& body);

// The error a call raised; the test fails when it raised none.
Error errorOf(const std::function<void()>& call);
// The number of the error a call raised, 0 when it raised none.
std::int32_t errorNumber(const std::function<void()>& call);

// A library error's description once a procedure's handler has passed it on.
String handledBy(std::u16string_view message, std::u16string_view procedure);

// u"..." literals print readably in failure messages.
std::string show(std::u16string_view s);

}  // namespace orvo::test
