#include "frame/library_info.hpp"

#include <string>

#include "orvogeneric/version.hpp"
#include "platform/system_paths.hpp"

// The version fields come from the build (CMake cache variables ORVO_VERSION_*), as the
// original took them from its version resource.
#ifndef ORVO_VERSION_DESCRIPTION
#define ORVO_VERSION_DESCRIPTION ""
#endif
#ifndef ORVO_VERSION_NUMBER
#define ORVO_VERSION_NUMBER "0.0.0"
#endif
#ifndef ORVO_REVISION
#define ORVO_REVISION "unrecorded"
#endif
#ifndef ORVO_VERSION_TITLE
#define ORVO_VERSION_TITLE "ORVOGeneric"
#endif
#ifndef ORVO_VERSION_COMPANY
#define ORVO_VERSION_COMPANY ""
#endif
#ifndef ORVO_VERSION_COPYRIGHT
#define ORVO_VERSION_COPYRIGHT ""
#endif
#ifndef ORVO_VERSION_COMMENTS
#define ORVO_VERSION_COMMENTS ""
#endif

namespace orvo::frame {

namespace {

LibraryInfo compute() {
  LibraryInfo info;
  info.description = fromUtf8(ORVO_VERSION_DESCRIPTION);
  info.title = fromUtf8(ORVO_VERSION_TITLE);
  info.companyName = fromUtf8(ORVO_VERSION_COMPANY);
  info.copyright = fromUtf8(ORVO_VERSION_COPYRIGHT);
  info.comments = fromUtf8(ORVO_VERSION_COMMENTS);
  info.version = fromUtf8(ORVO_VERSION_NUMBER);
  info.revision = fromUtf8(ORVO_REVISION);
  const String module = platform::libraryModulePath();
  String name = u"ORVOGeneric";
  if (!module.empty()) {
    const auto slash = module.rfind(u'/');
    if (slash != String::npos) info.directory = module.substr(0, slash == 0 ? 1 : slash);
    name = slash == String::npos ? module : module.substr(slash + 1);
    // "libORVOGeneric.so.0" is the module "ORVOGeneric"; a program that links the code in
    // gives its own name.
    if (name.starts_with(u"lib") && name.find(u".so") != String::npos) name.erase(0, 3);
    if (const auto dot = name.find(u'.'); dot != String::npos && dot > 0) name.erase(dot);
  }
  info.moduleName = name;
  // Code linked into the program itself runs stand-alone; from a shared library it serves a
  // host, as a component does.
  info.startMode = module == platform::executablePath() ? 0 : 1;
  return info;
}

}  // namespace

const LibraryInfo& libraryInfo() {
  static const LibraryInfo info = compute();
  return info;
}

}  // namespace orvo::frame

namespace orvo {

std::string_view libraryVersion() noexcept { return ORVO_VERSION_NUMBER; }

}  // namespace orvo
