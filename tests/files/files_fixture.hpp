#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "orvogeneric/types.hpp"

namespace orvo::test {

// A scratch directory per test, removed afterwards.
class FilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvo_files_XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  // Writes the bytes to a file in the scratch directory; returns its path as library text.
  String write(const std::string& name, const std::string& bytes) const {
    std::ofstream(dir_ / name, std::ios::binary) << bytes;
    return path(name);
  }
  [[nodiscard]] String path(const std::string& name) const {
    return fromUtf8((dir_ / name).string());
  }
  [[nodiscard]] std::string read(const std::string& name) const {
    std::ifstream in(dir_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  // Text from a data file, "<dir>" standing for the scratch directory.
  [[nodiscard]] String inScratch(String text) const {
    const String dir = fromUtf8(dir_.string());
    for (auto at = text.find(u"<dir>"); at != String::npos; at = text.find(u"<dir>", at)) {
      text.replace(at, 5, dir);
      at += dir.size();
    }
    return text;
  }

  std::filesystem::path dir_;
};

// The same with the umask fixed at 022, for tests that check the permissions of new files.
class FilesTestWithUmask : public FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    previousMask_ = ::umask(022);
  }
  void TearDown() override {
    ::umask(previousMask_);
    FilesTest::TearDown();
  }

 private:
  mode_t previousMask_ = 0;
};

}  // namespace orvo::test
