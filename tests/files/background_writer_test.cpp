#include "files/background_writer.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace orvo::files {
namespace {

// What the file received, write by write, and on which thread.
struct Received {
  std::string bytes;
  std::vector<std::size_t> writes;
  std::vector<std::thread::id> threads;
  int failAt = -1;  // the write (from 0) that fails with error 112, if any
};

BackgroundWriter::Sink sinkInto(Received& r) {
  return [&r](std::span<const std::uint8_t> bytes, std::uint32_t& error) {
    if (static_cast<int>(r.writes.size()) == r.failAt) {
      error = 112;
      r.writes.push_back(0);
      return false;
    }
    r.bytes.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    r.writes.push_back(bytes.size());
    r.threads.push_back(std::this_thread::get_id());
    return true;
  };
}

// Pieces of a known text, of the given sizes in turn, appended until the text is used up.
std::string appendPieces(BackgroundWriter& writer, std::size_t total,
                         const std::vector<std::size_t>& sizes, bool& allAccepted) {
  std::string text;
  for (std::size_t i = 0; i < total; ++i) text.push_back(static_cast<char>('a' + (i * 7) % 26));
  allAccepted = true;
  std::size_t at = 0;
  for (std::size_t k = 0; at < total; ++k) {
    const std::size_t n = std::min(sizes[k % sizes.size()], total - at);
    allAccepted = writer.append(std::string_view(text).substr(at, n)) && allAccepted;
    at += n;
  }
  return text;
}

TEST(BackgroundWriter, WritesEveryByteInOrderInWholeBatches) {
  struct Case {
    const char* name;
    std::size_t batch;
    std::size_t total;
    std::vector<std::size_t> pieces;
    std::vector<std::size_t> writes;  // the sizes the file receives
  };
  const std::vector<Case> cases = {
      {"nothing", 8, 0, {3}, {}},
      {"less than a batch", 8, 5, {2}, {5}},
      {"exactly one batch", 8, 8, {8}, {8}},
      {"pieces across batches", 8, 21, {3, 5}, {8, 8, 5}},
      {"a piece larger than two batches", 4, 11, {11}, {4, 4, 3}},
      {"many batches of one byte", 1, 6, {2}, {1, 1, 1, 1, 1, 1}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Received r;
    BackgroundWriter writer(sinkInto(r), c.batch);
    bool accepted = false;
    const std::string text = appendPieces(writer, c.total, c.pieces, accepted);
    EXPECT_TRUE(accepted);
    std::uint32_t error = 99;
    EXPECT_TRUE(writer.finish(error));
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(r.bytes, text);
    EXPECT_EQ(r.writes, c.writes);
  }
}

TEST(BackgroundWriter, OutputSmallerThanABatchIsWrittenByTheCaller) {
  Received r;
  BackgroundWriter writer(sinkInto(r), 64);
  EXPECT_TRUE(writer.append("short"));
  std::uint32_t error = 0;
  EXPECT_TRUE(writer.finish(error));
  ASSERT_EQ(r.threads.size(), 1U);
  EXPECT_EQ(r.threads[0], std::this_thread::get_id());
}

TEST(BackgroundWriter, TheFirstFailureStopsTheWritesAndIsReported) {
  for (const int failAt : {0, 1, 3}) {
    SCOPED_TRACE("failing write " + std::to_string(failAt));
    Received r;
    r.failAt = failAt;
    BackgroundWriter writer(sinkInto(r), 4);
    bool accepted = true;
    appendPieces(writer, 40, {3}, accepted);
    std::uint32_t error = 0;
    EXPECT_FALSE(writer.finish(error));
    EXPECT_EQ(error, 112U);
    EXPECT_EQ(r.writes.size(), static_cast<std::size_t>(failAt) + 1) << "nothing after it";
    EXPECT_EQ(r.bytes.size(), static_cast<std::size_t>(failAt) * 4);
  }
}

TEST(BackgroundWriter, GivingUpMidWayWritesNothingMoreAndReturns) {
  Received r;
  {
    BackgroundWriter writer(sinkInto(r), 4);
    bool accepted = false;
    appendPieces(writer, 30, {5}, accepted);
  }
  EXPECT_LE(r.bytes.size(), 30U);
  EXPECT_EQ(r.bytes.size() % 4, 0U) << "only whole batches, never the one being filled";
}

}  // namespace
}  // namespace orvo::files
