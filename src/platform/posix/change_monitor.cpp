#include "platform/change_monitor.hpp"

#include <limits.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo::platform {

namespace {

// File systems whose change notifications cover every change, whoever makes it. Network file
// systems report only this machine's changes, and user-space ones none at all: their files are
// asked for their stamp instead.
bool reportsEveryChange(long type) {
  switch (static_cast<unsigned long>(type)) {
    case 0xEF53UL:      // ext2, ext3, ext4
    case 0x58465342UL:  // XFS
    case 0x9123683EUL:  // Btrfs
    case 0x01021994UL:  // tmpfs
    case 0x858458F6UL:  // ramfs
    case 0xF2F52010UL:  // F2FS
    case 0x2FC12FC1UL:  // ZFS
      return true;
    default:
      return false;
  }
}

// A file is watched twice: its directory says when the name comes to stand for another file
// (replaced by a rename, removed, created), and the file itself when its bytes or attributes
// change through any of its names, in this directory or another.
constexpr std::uint32_t kDirectoryEvents = IN_MOVED_FROM | IN_MOVED_TO | IN_CREATE | IN_DELETE |
                                           IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                                           IN_EXCL_UNLINK;
constexpr std::uint32_t kFileEvents =
    IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_DONT_FOLLOW | IN_MASK_ADD;
constexpr std::uint32_t kContentEvents = IN_MODIFY | IN_CLOSE_WRITE;

// Below this many watched names no sweep for unused ones is made.
constexpr std::size_t kSweepAbove = 128;

struct Named {
  std::shared_ptr<FileWatch> watch;
  int fileWd = -1;
  dev_t device = 0;  // the file the name led to when its watch was placed
  ino_t inode = 0;
  bool content = false;  // whether writes to the file are counted too
};

// What one watch descriptor stands for: a directory and the names watched in it, or a file
// and the watches of the names that lead to it.
struct Watched {
  std::string directory;  // empty for a file
  std::unordered_map<std::string, Named> names;
  std::vector<std::shared_ptr<FileWatch>> file;
};

class Monitor {
 public:
  std::shared_ptr<const FileWatch> watch(const std::string& path, WatchFor what) {
    const bool content = what == WatchFor::Content;
    const std::lock_guard lock(mutex_);
    afterFork();
    const auto slash = path.rfind('/');
    if (path.empty() || path[0] != '/' || slash == std::string::npos) return nullptr;
    const std::string name = path.substr(slash + 1);
    if (name.empty() || name == "." || name == "..") return nullptr;
    // A link can be pointed elsewhere without a word to its target's directory.
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return nullptr;
    const int directoryWd = directoryFor(slash == 0 ? std::string("/") : path.substr(0, slash));
    if (directoryWd < 0) return nullptr;
    Named& named = watched_[directoryWd].names[name];
    const bool known = named.watch != nullptr;
    if (known && named.watch->live() && named.device == st.st_dev && named.inode == st.st_ino &&
        (named.content || !content)) {
      return named.watch;
    }
    // The name leads to another file than the one watched (it was replaced, and the old file
    // is still open somewhere): the watch moves to the new one and keeps its count, which the
    // replacement has moved on already.
    if (known) dropFileWatch(named);
    if (!known || !named.watch->live()) named.watch = std::make_shared<FileWatch>();
    // The directory's watch is in place first: a file put under the name after this is seen
    // there, whichever file the watch below lands on.
    // Masks add up: a name watched both ways counts every change for both.
    named.content = named.content || content;
    named.fileWd =
        ::inotify_add_watch(fd_, path.c_str(), kFileEvents | (named.content ? kContentEvents : 0));
    if (named.fileWd < 0) {
      watched_[directoryWd].names.erase(name);
      if (known) --names_;
      return nullptr;
    }
    named.device = st.st_dev;
    named.inode = st.st_ino;
    watched_[named.fileWd].file.push_back(named.watch);
    // Held here, the new watch is in use for the sweep, which may also move the map.
    std::shared_ptr<const FileWatch> result = named.watch;
    if (!known && ++names_ > sweepAt_) sweep();
    return result;
  }

  void collect() {
    // Asking the readiness list costs half of what a read of the empty queue does, and a
    // change is on that list by the time the system call that made it has returned. While
    // nothing is on it no lock is taken; a child that forked asks its parent's list at most
    // once more before it starts afresh below, and never reads from the queue.
    if (!forked().load(std::memory_order_acquire)) {
      const int readiness = readiness_.load(std::memory_order_acquire);
      if (readiness < 0) return;
      epoll_event ready{};
      if (::epoll_wait(readiness, &ready, 1, 0) <= 0) return;
    }
    const std::lock_guard lock(mutex_);
    afterFork();
    if (fd_ < 0) return;
    // Room for many events at once; one event with the longest name always fits.
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    for (;;) {
      const ssize_t n = ::read(fd_, buffer, sizeof buffer);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return;  // EAGAIN: nothing more has happened
      for (ssize_t at = 0; at < n;) {
        inotify_event event{};
        std::memcpy(&event, buffer + at, sizeof event);
        const char* name = buffer + at + sizeof event;
        take(event, std::string(name, ::strnlen(name, event.len)));
        at += static_cast<ssize_t>(sizeof event + event.len);
      }
    }
  }

  static Monitor& instance() {
    static Monitor* monitor = [] {
      // Never destroyed: a cache in another static may still ask during exit.
      auto* created = new Monitor();
      // Children that fork share the parent's queue of notifications: one that read from it
      // would take the parent's news, so the child starts afresh. The lock is held across the
      // fork so that the child's copy of it is not left held by a thread it does not have.
      ::pthread_atfork([] { instance().mutex_.lock(); }, [] { instance().mutex_.unlock(); },
                       [] {
                         forked().store(true);
                         instance().mutex_.unlock();
                       });
      return created;
    }();
    return *monitor;
  }

 private:
  static std::atomic<bool>& forked() {
    static std::atomic<bool> flag{false};
    return flag;
  }

  // The watch descriptor of a directory, or -1 where its changes cannot all be seen.
  int directoryFor(const std::string& path) {
    if (const auto known = byPath_.find(path); known != byPath_.end()) return known->second;
    if (fd_ < 0 && !failed_) open();
    if (fd_ < 0) return -1;
    // Only the directory's own name is watched: a path through a link, "." or ".." would see
    // another directory once the link or the working directory moved.
    char* real = ::realpath(path.c_str(), nullptr);
    const bool canonical = real != nullptr && path == real;
    ::free(real);
    struct statfs fs {};
    if (!canonical || ::statfs(path.c_str(), &fs) != 0 || !reportsEveryChange(fs.f_type)) {
      return -1;
    }
    const int wd = ::inotify_add_watch(fd_, path.c_str(), kDirectoryEvents);
    if (wd < 0) return -1;  // no watches left, or no right to read the directory
    byPath_[path] = wd;
    watched_[wd].directory = path;
    return wd;
  }

  void take(const inotify_event& event, const std::string& name) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
      // Events were lost: any file may have changed.
      for (auto& [wd, w] : watched_) {
        for (auto& watch : w.file) watch->noteChange();
      }
      return;
    }
    const auto it = watched_.find(event.wd);
    if (it == watched_.end()) return;
    Watched& w = it->second;
    if (w.directory.empty()) {
      // The file itself. Once it is gone (its last name removed) or elsewhere, the names that
      // led to it need new watches.
      const bool gone = (event.mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF)) != 0;
      for (auto& watch : w.file) gone ? watch->end() : watch->noteChange();
      if (gone) forget(event.wd, (event.mask & IN_IGNORED) == 0);
      return;
    }
    if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) != 0) {
      // The directory is gone or elsewhere: its names no longer lead to these files.
      for (auto& [file, named] : w.names) named.watch->end();
      forget(event.wd, (event.mask & IN_IGNORED) == 0);
      return;
    }
    if (const auto named = w.names.find(name); named != w.names.end()) {
      named->second.watch->noteChange();
    }
  }

  // Drops what a watch descriptor stands for, and the descriptor itself unless the system has.
  void forget(int wd, bool remove) {
    const auto it = watched_.find(wd);
    if (it == watched_.end()) return;
    if (remove) ::inotify_rm_watch(fd_, wd);
    if (!it->second.directory.empty()) {
      byPath_.erase(it->second.directory);
      const auto names = std::move(it->second.names);
      watched_.erase(it);
      names_ -= names.size();
      for (const auto& [name, named] : names) dropFileWatch(named);
    } else {
      watched_.erase(it);
    }
  }

  // Takes a name's watch off the file it leads to, and the file's descriptor once unused.
  void dropFileWatch(const Named& named) {
    const auto file = watched_.find(named.fileWd);
    if (file == watched_.end()) return;
    std::erase(file->second.file, named.watch);
    if (!file->second.file.empty()) return;
    ::inotify_rm_watch(fd_, named.fileWd);
    watched_.erase(file);
  }

  // Forgets names no caller holds any longer, and directories left without names.
  void sweep() {
    std::vector<int> emptyDirectories;
    std::vector<Named> unused;
    for (auto& [wd, w] : watched_) {
      if (w.directory.empty()) continue;
      for (auto n = w.names.begin(); n != w.names.end();) {
        if (n->second.watch.use_count() > 2) {  // the name's, the file's and a caller's
          ++n;
          continue;
        }
        unused.push_back(n->second);
        n = w.names.erase(n);
        --names_;
      }
      if (w.names.empty()) emptyDirectories.push_back(wd);
    }
    for (const Named& named : unused) dropFileWatch(named);
    for (const int wd : emptyDirectories) forget(wd, true);
    sweepAt_ = std::max(kSweepAbove, 2 * names_);
  }

  void open() {
    fd_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const int readiness = fd_ < 0 ? -1 : ::epoll_create1(EPOLL_CLOEXEC);
    epoll_event interest{};
    interest.events = EPOLLIN;
    if (readiness < 0 || ::epoll_ctl(readiness, EPOLL_CTL_ADD, fd_, &interest) != 0) {
      // No instances left for this user: stamps for every file.
      if (readiness >= 0) ::close(readiness);
      closeAll();
      failed_ = true;
      return;
    }
    readiness_.store(readiness, std::memory_order_release);
  }

  void closeAll() {
    if (fd_ >= 0) ::close(fd_);
    const int readiness = readiness_.exchange(-1);
    if (readiness >= 0) ::close(readiness);
    fd_ = -1;
  }

  // In a child that forked. Until this is done, every thread of the child takes the lock
  // (forked() is set before the child has a second thread), so the descriptors are closed
  // while no one asks them.
  void afterFork() {
    if (!forked().load(std::memory_order_acquire)) return;
    for (auto& [wd, w] : watched_) {
      for (auto& watch : w.file) watch->end();
    }
    watched_.clear();
    byPath_.clear();
    names_ = 0;
    // Closing the child's descriptors leaves the parent's queue as it was.
    closeAll();
    failed_ = false;
    forked().store(false, std::memory_order_release);
  }

  std::mutex mutex_;
  int fd_ = -1;
  std::atomic<int> readiness_{-1};  // an epoll set holding fd_
  bool failed_ = false;
  std::unordered_map<int, Watched> watched_;
  std::unordered_map<std::string, int> byPath_;
  std::size_t names_ = 0;
  std::size_t sweepAt_ = kSweepAbove;
};

}  // namespace

std::shared_ptr<const FileWatch> watchFile(const NativePath& path, WatchFor what) {
  return Monitor::instance().watch(path.native(), what);
}

void collectChanges() { Monitor::instance().collect(); }

}  // namespace orvo::platform
