#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvogeneric/types.hpp"
#include "settings/profile_line.hpp"
#include "settings/slot_table.hpp"

// A settings file's bytes as the platform reads them, indexed by section and key names, so that
// a lookup costs a hash and a few comparisons and a write knows the exact bytes of the line it
// replaces. The index holds one entry per section and per distinct key, and only while the
// whole stays within four times the file: a file made of nothing but tiny sections or keys is
// read through instead, slower to look up but never a multiple of its size in memory.
namespace orvo::settings::privateprofile::detail {

// The index keeps 32-bit offsets: a settings file of a gigabyte is refused as unreadable.
constexpr std::size_t kLargestFile = std::size_t{1} << 30;

// A section found by name: its number among the file's sections (counted only while they are
// indexed), where its header line starts and where the section ends, in units of the text.
struct SectionRef {
  std::size_t number = 0;
  std::size_t header = 0;
  std::size_t end = 0;
};

// Where a line lies in the file's bytes, the BOM included.
struct ByteLine {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t next = 0;
};

// What a writer changed in one place of the text: `removed` units at `at` replaced by inserted
// (given as text and as the bytes written), which holds a whole new key line, or a new section
// with its first key, where said. Everything before `at` is as it was.
struct LineEdit {
  std::size_t at = 0;
  std::size_t removed = 0;
  std::u16string_view inserted;
  std::string_view insertedBytes;
  std::optional<std::size_t> newSectionAt;  // where an added section's header starts
  std::optional<std::size_t> newKeyAt;      // where an added key's line starts
  std::size_t section = 0;                  // the number of the section of an added key
};

class Document {
 public:
  Document(std::string raw, std::uint32_t ansiCodePage);

  // Whether the parse of these bytes with the edit made (newSize bytes) can be this one's
  // with its index moved along: only where the text follows the bytes unit for unit.
  [[nodiscard]] bool canMoveAlong(const LineEdit& edit, std::size_t newSize) const;
  // That parse, for raw, which is these bytes with the edit made.
  [[nodiscard]] std::shared_ptr<const Document> edited(std::string raw, const LineEdit& edit) const;

  [[nodiscard]] const std::string& raw() const noexcept { return raw_; }
  [[nodiscard]] std::uint32_t ansiCodePage() const noexcept { return acp_; }
  // Whether the text depends on the ANSI code page: an 8-bit file with bytes beyond ASCII.
  [[nodiscard]] bool dependsOnCodePage() const noexcept { return dependsOnCodePage_; }
  [[nodiscard]] bool wide() const noexcept {
    return encoding_ == Encoding::Utf16Le || encoding_ == Encoding::Utf16Be;
  }
  // Whether names and values are found in converted text rather than in the bytes.
  [[nodiscard]] bool decoded() const noexcept { return wide() || byLines_; }

  // The text's length in its units; lines start at 0 and at each line's next.
  [[nodiscard]] std::size_t textSize() const noexcept {
    return decoded() ? units_.size() : raw_.size() - bom_;
  }
  // The line that starts at pos.
  [[nodiscard]] Line lineAt(std::size_t pos) const;

  // The first section of that name (already upper-cased).
  [[nodiscard]] std::optional<SectionRef> findSection(std::u16string_view upperName) const;
  // The first key of that name (already upper-cased) in the section.
  [[nodiscard]] std::optional<Line> findKey(const SectionRef& section,
                                            std::u16string_view upperName) const;

  // Where a line start (or the end of the text) lies in the file's bytes.
  [[nodiscard]] std::size_t byteOf(std::size_t pos) const;
  [[nodiscard]] ByteLine bytesOf(const Line& line) const;

  // A piece of the text.
  [[nodiscard]] String text(std::size_t begin, std::size_t end) const;
  // Text in the file's encoding.
  [[nodiscard]] std::string encode(std::u16string_view text) const;
  // How many units of this file's text the text takes (bytes, unless the file is UTF-16).
  [[nodiscard]] std::size_t unitsOf(std::u16string_view text) const {
    return wide() ? text.size() : encode(text).size();
  }
  // Whether the content after the BOM is empty or ends with a line terminator. A UTF-16 file
  // of odd length does not: it ends in half a unit, which text added after it completes.
  [[nodiscard]] bool endsWithTerminator() const noexcept;

  // The bytes this parse holds, the file's own included.
  [[nodiscard]] std::size_t memoryUse() const noexcept;
  [[nodiscard]] bool sectionsIndexed() const noexcept { return sectionsIndexed_; }
  [[nodiscard]] bool keysIndexed() const noexcept { return !keys_.empty(); }

 private:
  struct SectionEntry {
    std::uint32_t hash;
    std::uint32_t header;
  };

  Document(std::string raw, const Document& before);
  void decodeByLines();
  void index();
  [[nodiscard]] std::size_t lineCount() const noexcept;
  void insertKey(const Line& line, std::size_t section);
  void insertSectionName(std::size_t number);
  // The file, its text and the index together stay within four times the file, or 64 KiB for
  // a small file, so that small files are always indexed.
  [[nodiscard]] std::size_t heldText() const noexcept;
  [[nodiscard]] std::size_t memoryBound() const noexcept;
  [[nodiscard]] bool withinMemoryBound() const noexcept;
  [[nodiscard]] SectionRef sectionAt(std::size_t number) const;

  [[nodiscard]] const std::uint8_t* bytes() const noexcept {
    return reinterpret_cast<const std::uint8_t*>(raw_.data()) + bom_;
  }
  [[nodiscard]] bool asciiName(const Line& l) const noexcept;
  // The hash of the upper-cased name, as hashUnits gives it for the decoded text.
  [[nodiscard]] std::uint64_t nameHash(const Line& l) const;
  [[nodiscard]] bool sameName(const Line& a, const Line& b) const;
  [[nodiscard]] bool nameEquals(const Line& l, std::u16string_view upperName) const;

  std::string raw_;
  std::uint32_t acp_;
  Encoding encoding_ = Encoding::Ansi;
  std::size_t bom_ = 0;
  bool byLines_ = false;
  bool dependsOnCodePage_ = false;
  bool sectionsIndexed_ = false;
  std::u16string units_;                // the converted text, when decoded()
  std::vector<SectionEntry> sections_;  // in file order
  SlotTable sectionNames_;              // section numbers by name, when there is room
  SlotTable keys_;                      // key line starts by section number and name
};

}  // namespace orvo::settings::privateprofile::detail
