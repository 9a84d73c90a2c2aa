#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"

// What the library says about itself: the fields of its version information and where it was
// loaded from.
namespace orvo::frame {

struct LibraryInfo {
  String description;
  String title;
  String companyName;
  String copyright;
  String comments;
  String version;     // major.minor.revision
  String revision;    // the source-control revision the build was made from
  String moduleName;  // file name without "lib" and extensions
  String directory;
  std::int32_t startMode = 0;  // 0 stand-alone, 1 automation component
};

const LibraryInfo& libraryInfo();

}  // namespace orvo::frame
