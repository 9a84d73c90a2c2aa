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
#include <sstream>
#include <string>
#include <thread>
#include <unordered_set>
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

// Whether the process listens on the pipe through which launchers hand it their arguments. Until
// it does, a launcher finds no program and tries to become it: it then races the starting one for
// the profile, and a program started with a file rather than handed one refuses the file on
// builds without windows. Either way both can end, leaving no Calc at all.
bool listensForLaunchers(std::int32_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid) + "/fd";
  DIR* fds = ::opendir(folder.c_str());
  if (fds == nullptr) return false;
  std::unordered_set<std::string> sockets;
  constexpr std::string_view kSocket = "socket:[";
  while (const dirent* entry = ::readdir(fds)) {
    char target[64];
    const ssize_t length = ::readlinkat(::dirfd(fds), entry->d_name, target, sizeof target);
    const std::string_view link(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    if (link.starts_with(kSocket) && link.ends_with(']')) {
      sockets.emplace(link.substr(kSocket.size(), link.size() - kSocket.size() - 1));
    }
  }
  ::closedir(fds);
  if (sockets.empty()) return false;
  // Columns: slot, references, protocol, flags, type, state, inode, path.
  constexpr unsigned long kAcceptsConnections = 0x10000;
  std::ifstream table("/proc/net/unix");
  // Where the socket table is hidden, the hand-over is simply tried, and retried.
  if (!table) return true;
  std::string line;
  std::getline(table, line);
  while (std::getline(table, line)) {
    std::istringstream columns(line);
    std::string slot, references, protocol, flags, type, state, inode, path;
    columns >> slot >> references >> protocol >> flags >> type >> state >> inode >> path;
    if ((std::strtoul(flags.c_str(), nullptr, 16) & kAcceptsConnections) != 0 &&
        path.find("_SingleOfficeIPC_") != std::string::npos && sockets.contains(inode)) {
      return true;
    }
  }
  return false;
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
  // A Calc just started takes a moment, longer on a first start on a new profile, before it
  // listens for launchers; it is waited for rather than raced.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (;;) {
    const std::int32_t calc = runningCalc();
    if (calc == 0) return false;
    if (listensForLaunchers(calc)) {
      int error = 0;
      const pid_t pid = spawnLauncher(arguments, error);
      if (pid == 0) return false;
      // The launcher hands the file to the running program and ends.
      int status = 0;
      const ChildWait waited = waitBriefly(pid, std::chrono::seconds(30), status);
      if (waited == ChildWait::StillRunning ||
          (waited == ChildWait::Ended && WIFEXITED(status) && WEXITSTATUS(status) == 0)) {
        return true;
      }
    }
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

}  // namespace orvo::platform
