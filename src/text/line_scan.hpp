#pragma once

#include <cstddef>
#include <cstdint>

// Counting and skipping lines over whole buffers. A line ends at a CR, at an LF that does not
// follow a CR, or at a CR LF pair (counted once, at its CR). The scan builds a bit mask of the
// line ends of 64 units at a time and counts them with one instruction, so that its cost does
// not depend on how long the lines are and no branch is taken per line; the widest vector unit
// the processor has builds the masks.
namespace orvo::text {

// How the units of a text are stored: 1, 2 or 4 bytes, and for wider units which byte order.
struct UnitForm {
  std::uint8_t width = 1;
  bool bigEndian = false;
};

struct LineEndScan {
  std::uint64_t ends = 0;     // line ends found
  std::size_t stop = 0;       // bytes consumed: just after the last end counted, or all whole units
  bool lastWasCr = false;     // whether the last unit consumed is a CR
  bool lastWasBreak = false;  // whether it is a CR or an LF
};

// Scans the whole units of p[0, n) for at most `limit` line ends. `afterCr` says whether the
// unit before p was a CR (so that an LF first in p ends no line). With fewer than `limit` ends
// in the text, every whole unit is consumed.
LineEndScan scanLineEnds(const std::uint8_t* p, std::size_t n, UnitForm form, bool afterCr,
                         std::uint64_t limit) noexcept;

// The name of the vector unit the scan uses on this processor, for benchmarks and tests.
const char* lineScanUnit() noexcept;
// For tests: the scan with a given unit ("avx512", "avx2", "portable"); false when the
// processor lacks it.
bool scanLineEndsWith(const char* unit, const std::uint8_t* p, std::size_t n, UnitForm form,
                      bool afterCr, std::uint64_t limit, LineEndScan& out) noexcept;

}  // namespace orvo::text
