#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

// The index of a parsed settings file: 32-bit name hashes with a 32-bit value each (where a
// line starts, or a section's number), eight bytes a name, in one array probed in line. The
// names themselves stay in the file's text; a caller compares them on a hash match.
namespace orvo::settings::privateprofile::detail {

class SlotTable {
 public:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t value = kEmpty;
  };

  // Slots for n names: two for every three names at most, so that a miss ends after a few
  // probes.
  static constexpr std::size_t slotsFor(std::size_t names) noexcept {
    return names == 0 ? 0 : names + names / 2 + 1;
  }

  void reset(std::size_t slots) {
    slots_.assign(slots, Slot{});
    used_ = 0;
  }
  void release() {
    slots_ = {};
    used_ = 0;
  }
  [[nodiscard]] bool empty() const noexcept { return slots_.empty(); }
  [[nodiscard]] std::size_t bytes() const noexcept { return slots_.capacity() * sizeof(Slot); }

  // The first value of that hash that `matches` accepts, in the order the values were added.
  template <class Matches>
  std::optional<std::uint32_t> find(std::uint32_t hash, Matches&& matches) const {
    for (std::size_t s = home(hash);; s = following(s)) {
      const Slot& slot = slots_[s];
      if (slot.value == kEmpty) return std::nullopt;
      if (slot.hash == hash && matches(slot.value)) return slot.value;
    }
  }

  // Adds a value unless `same` finds one for the same name among those of its hash: the first
  // of duplicate names is the one found.
  template <class Same>
  void insert(std::uint32_t hash, std::uint32_t value, Same&& same) {
    for (std::size_t s = home(hash);; s = following(s)) {
      Slot& slot = slots_[s];
      if (slot.value == kEmpty) {
        slot = {hash, value};
        ++used_;
        return;
      }
      if (slot.hash == hash && same(slot.value)) return;
    }
  }

  // Doubles the table when one more name would fill it past two thirds. The stored hashes say
  // where each value goes, so no name is read again.
  void makeRoomForOne() {
    if (slotsFor(used_ + 1) <= slots_.size()) return;
    std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(2 * slots_.size() + 2));
    for (const Slot& slot : old) {
      if (slot.value == kEmpty) continue;
      std::size_t s = home(slot.hash);
      while (slots_[s].value != kEmpty) s = following(s);
      slots_[s] = slot;
    }
  }

  // Adds delta (modulo 2^32) to every value from `from` up: a writer moving the line starts
  // after its edit along. The values lie in file order but the slots in hash order, so a test
  // per slot would be mispredicted half the time; the sum is taken without a branch.
  void moveValuesFrom(std::uint32_t from, std::uint32_t delta) noexcept {
    for (Slot& slot : slots_) {
      const std::uint32_t moves = (slot.value >= from) & (slot.value != kEmpty);
      slot.value += moves * delta;
    }
  }

 private:
  [[nodiscard]] std::size_t home(std::uint32_t hash) const noexcept {
    return static_cast<std::size_t>((std::uint64_t{hash} * slots_.size()) >> 32);
  }
  [[nodiscard]] std::size_t following(std::size_t s) const noexcept {
    return s + 1 == slots_.size() ? 0 : s + 1;
  }

  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

}  // namespace orvo::settings::privateprofile::detail
