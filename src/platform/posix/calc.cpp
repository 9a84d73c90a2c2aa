#include "platform/calc.hpp"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "orvogeneric/types.hpp"
#include "platform/native_path.hpp"
#include "platform/posix/child_streams.hpp"
#include "platform/process.hpp"

namespace orvo::platform {

namespace {

// The program users start Calc with; it hands its arguments to a Calc already running.
constexpr const char* kLauncher = "soffice";
// The process that stays: one per user profile, with the program's windows.
constexpr std::string_view kOfficeProcess = "soffice.bin";

// Starts the launcher with these arguments; 0 when it could not be started (ENOENT: missing).
pid_t spawnLauncher(std::vector<std::string> arguments, int& error) {
  arguments.insert(arguments.begin(), kLauncher);
  pid_t pid = 0;
  error = spawnChild(std::move(arguments), pid);
  return error == 0 ? pid : 0;
}

}  // namespace

std::int32_t runningCalc() {
  DIR* proc = ::opendir("/proc");
  if (proc == nullptr) return 0;
  const uid_t me = ::getuid();
  std::int32_t found = 0;
  while (const dirent* entry = ::readdir(proc)) {
    const std::string name = entry->d_name;
    if (name.empty() || name.find_first_not_of("0123456789") != std::string::npos) continue;
    struct stat st {};
    if (::stat(("/proc/" + name).c_str(), &st) != 0 || st.st_uid != me) continue;
    std::ifstream comm("/proc/" + name + "/comm");
    std::string command;
    if (!std::getline(comm, command) || command != kOfficeProcess) continue;
    // One started on a profile of its own does not receive what the launcher hands over.
    std::ifstream cmdline("/proc/" + name + "/cmdline");
    const std::string arguments((std::istreambuf_iterator<char>(cmdline)),
                                std::istreambuf_iterator<char>());
    if (arguments.find("-env:UserInstallation=") == std::string::npos) {
      found = static_cast<std::int32_t>(std::strtol(name.c_str(), nullptr, 10));
      break;
    }
  }
  ::closedir(proc);
  return found;
}

bool calcShowsWindows() {
  // Builds without a window-system plug-in (Debian's -nogui packages) run without windows.
  const char* path = std::getenv("PATH");
  std::string_view rest = path != nullptr ? path : "";
  while (!rest.empty()) {
    const auto colon = rest.find(':');
    const std::string dir(rest.substr(0, colon));
    rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    char resolved[PATH_MAX];
    if (dir.empty() || ::realpath((dir + "/" + kLauncher).c_str(), resolved) == nullptr) continue;
    std::string program(resolved);
    program.resize(program.rfind('/'));
    DIR* folder = ::opendir(program.c_str());
    if (folder == nullptr) return false;
    bool found = false;
    while (const dirent* entry = ::readdir(folder)) {
      const std::string_view file = entry->d_name;
      if (file.starts_with("libvclplug_") && !file.starts_with("libvclplug_svp")) found = true;
    }
    ::closedir(folder);
    return found;
  }
  return false;
}

CalcStart startCalc(bool minimized) {
  std::vector<std::string> arguments = {"--calc", "--nologo", "--norestore"};
  if (minimized) arguments.emplace_back("--minimized");
  int error = 0;
  const pid_t pid = spawnLauncher(std::move(arguments), error);
  if (pid == 0) return error == ENOENT ? CalcStart::NotInstalled : CalcStart::Failed;
  // The launcher stays while the program runs; it is reaped whenever it ends.
  reapWhenEnded(static_cast<std::int32_t>(pid));
  return CalcStart::Started;
}

bool openInCalc(std::u16string_view file, std::u16string_view importOptions) {
  const std::vector<std::string> arguments = {"--infilter=" + toUtf8(importOptions),
                                              NativePath(String(file)).native()};
  // A Calc still starting refuses what a launcher hands it; it is asked again until it takes the
  // file, for as long as a first start on a new profile takes.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (;;) {
    int error = 0;
    const pid_t pid = spawnLauncher(arguments, error);
    if (pid == 0) return false;
    // A second launcher hands the file to the running program and ends; one that finds no
    // program becomes it and stays, which is as good once the file is open.
    int status = 0;
    const ChildWait waited = waitBriefly(pid, std::chrono::seconds(30), status);
    if (waited == ChildWait::StillRunning ||
        (waited == ChildWait::Ended && WIFEXITED(status) && WEXITSTATUS(status) == 0)) {
      return true;
    }
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}

}  // namespace orvo::platform
