#include "text/line_scan.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace orvo::test {
namespace {

using text::LineEndScan;
using text::UnitForm;

// The line ends of a text as a reader sees them, line by line: where each terminator ends,
// a CR LF pair being one terminator.
std::vector<std::size_t> lineEndsByLines(const std::vector<std::uint32_t>& units, bool afterCr) {
  std::vector<std::size_t> ends;
  std::size_t i = 0;
  if (afterCr && !units.empty() && units[0] == 10) i = 1;  // the LF of a pair begun before
  while (i < units.size()) {
    while (i < units.size() && units[i] != 10 && units[i] != 13) ++i;
    if (i == units.size()) break;
    ends.push_back(i + 1);
    i += (units[i] == 13 && i + 1 < units.size() && units[i + 1] == 10) ? 2 : 1;
  }
  return ends;
}

std::string encode(const std::vector<std::uint32_t>& units, UnitForm form) {
  std::string out;
  for (const std::uint32_t u : units) {
    for (std::size_t b = 0; b < form.width; ++b) {
      const std::size_t shift = 8 * (form.bigEndian ? form.width - 1 - b : b);
      out.push_back(static_cast<char>((u >> shift) & 0xFF));
    }
  }
  return out;
}

// Random texts of CR, LF, ordinary units and units that hold a CR or LF byte without being one,
// through every vector unit the processor has and every unit form, checked against reading line
// by line: the count, the stop after each n-th end, and the carry of a CR into the next call.
TEST(LineScan, EveryUnitAgreesWithReadingLineByLine) {
  const std::vector<std::uint32_t> alphabet = {'a', 13, 10, 13, 10, 0x0D0A, 0x0A0D, 0x10D, 0xD00};
  const std::vector<UnitForm> forms = {{1, false}, {2, false}, {2, true}, {4, false}, {4, true}};
  std::mt19937 random(20261123);
  int checked = 0;
  for (const char* unit : {"avx512", "avx2", "portable"}) {
    for (const UnitForm form : forms) {
      for (int round = 0; round < 150; ++round) {
        std::vector<std::uint32_t> units(random() % 300);
        for (auto& u : units) {
          u = alphabet[random() % alphabet.size()];
          if (form.width == 1) u &= 0xFF;
        }
        const bool afterCr = random() % 4 == 0;
        const std::string bytes = encode(units, form);
        // A partial unit after the text, as a read can leave at the end of a buffer.
        const std::string withTail = bytes + std::string(form.width - 1, '\r');
        const auto* p = reinterpret_cast<const std::uint8_t*>(withTail.data());
        const std::vector<std::size_t> ends = lineEndsByLines(units, afterCr);
        SCOPED_TRACE(testing::Message() << unit << " width " << int{form.width}
                                        << (form.bigEndian ? " BE" : " LE") << " round " << round);
        LineEndScan all;
        if (!text::scanLineEndsWith(unit, p, withTail.size(), form, afterCr, UINT64_MAX, all)) {
          break;  // the processor lacks this unit
        }
        ASSERT_EQ(all.ends, ends.size());
        EXPECT_EQ(all.stop, bytes.size());  // the partial unit is left
        EXPECT_EQ(all.lastWasCr, units.empty() ? afterCr : units.back() == 13);
        for (std::size_t n = 1; n <= ends.size(); ++n) {
          LineEndScan some;
          text::scanLineEndsWith(unit, p, bytes.size(), form, afterCr, n, some);
          ASSERT_EQ(some.stop, ends[n - 1] * form.width) << n;
          EXPECT_EQ(some.ends, n);
          EXPECT_TRUE(some.lastWasBreak);
        }
        // Cut anywhere, the second part told whether the first ended with a CR.
        const std::size_t cut = units.empty() ? 0 : random() % units.size();
        LineEndScan first;
        LineEndScan second;
        text::scanLineEndsWith(unit, p, cut * form.width, form, afterCr, UINT64_MAX, first);
        text::scanLineEndsWith(unit, p + cut * form.width, bytes.size() - cut * form.width, form,
                               first.lastWasCr, UINT64_MAX, second);
        EXPECT_EQ(first.ends + second.ends, ends.size()) << "cut at " << cut;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 0);
  EXPECT_NE(std::string(text::lineScanUnit()), "");
}

}  // namespace
}  // namespace orvo::test
