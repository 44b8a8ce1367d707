// POSIX only (Linux futexes): manual-reset events.
//
// An event is one 32-bit state word, 0 until signalled and 1 from then on,
// waited on with a futex. An unnamed event keeps its word in this process's
// record of it. A named event keeps it in a page of POSIX shared memory
// that every process of the same user opening the same name maps, and its
// futex calls are not process-private, so a signal in one process wakes the
// waiters of all of them.
//
// The page's name is "/qxrtl.event.<uid>.<name>", the event's name kept
// readable: letters, digits, '.', '-' and '_' stand for themselves, every
// other UTF-16 unit is written "%XXXX". A name whose form would be too long
// for the system is named by a 64-bit hash of it instead ("#" and sixteen
// hex digits); since two names might share a hash, the page also holds the
// event's full name, and a page holding another name is refused.
//
// Lifetime: every handle holds a shared file lock (flock) on its page for
// as long as it is open; the system drops it when the process ends, however
// it ends. Opening and closing also take an exclusive record lock on the
// page's first byte (an open-file-description lock), so they run one at a
// time. An opener that can take the flock exclusively finds no other live
// handle: the page is fresh or was left by processes that are gone, so it
// starts the event afresh, not signalled, as if the page were new. A closer
// that can take the flock exclusively holds the last handle and removes the
// page's name; an opener that got the page just before sees that it has no
// name any more and opens afresh.
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "Quorvex.Platform.Events.hpp"

namespace Quorvex::Platform {

namespace {

using TStateWord = std::atomic<uint32_t>;
static_assert(sizeof(TStateWord) == sizeof(uint32_t) && TStateWord::is_always_lock_free,
              "the futex word must be a plain 32-bit integer");

constexpr size_t kPageSize = 4096;
constexpr size_t kMaxNameUnits = 2040;

// The shared page of a named event.
struct TSharedPage {
  TStateWord Signalled;
  uint32_t NameLength;  // in UTF-16 units
  char16_t Name[kMaxNameUnits];
};
static_assert(sizeof(TSharedPage) <= kPageSize);

// This process's record of an open event; its address is the handle.
struct TEventRecord {
  TStateWord* State;
  TStateWord LocalState{0};     // the state of an unnamed event
  TSharedPage* Page = nullptr;  // mapped, for a named event
  int File = -1;                // the page's descriptor, for a named event
  std::string SharedName;       // the page's name, for a named event
};

bool IsKeptAsIs(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9') ||
         unit == u'.' || unit == u'-' || unit == u'_';
}

void AppendHex(std::string& text, uint64_t value, int digits) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) text += kDigits[(value >> shift) & 0xF];
}

// 64-bit FNV-1a over the name's UTF-16 units.
uint64_t NameHash(std::u16string_view name) {
  uint64_t hash = 0xCBF29CE484222325u;
  for (char16_t unit : name) {
    hash = (hash ^ (unit & 0xFF)) * 0x100000001B3u;
    hash = (hash ^ (unit >> 8)) * 0x100000001B3u;
  }
  return hash;
}

// The shared-memory name of the event `name` for the calling user.
std::string SharedNameOf(std::u16string_view name) {
  const std::string prefix = "/qxrtl.event." + std::to_string(geteuid()) + ".";
  std::string escaped;
  for (char16_t unit : name) {
    if (IsKeptAsIs(unit)) {
      escaped += static_cast<char>(unit);
    } else {
      escaped += '%';
      AppendHex(escaped, unit, 4);
    }
  }
  // The name without its leading '/' must fit a file name.
  if (prefix.size() - 1 + escaped.size() <= NAME_MAX) return prefix + escaped;
  std::string hashed = prefix + "#";
  AppendHex(hashed, NameHash(name), 16);
  return hashed;
}

bool LockFile(int file, int operation) {
  while (flock(file, operation) != 0)
    if (errno != EINTR) return false;
  return true;
}

// Takes (F_WRLCK) or leaves (F_UNLCK) the lock that runs the openers and
// closers of a page one at a time.
bool LockSetup(int file, short type) {
  struct flock range {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_len = 1;
  while (fcntl(file, F_OFD_SETLKW, &range) != 0)
    if (errno != EINTR) return false;
  return true;
}

// True when no other handle, in any process, has the page open.
bool IsSoleHandle(int file) { return flock(file, LOCK_EX | LOCK_NB) == 0; }

// Checks that the open page is one of ours and sizes a fresh one; false
// with errno set when it is not usable.
bool PreparePage(int file) {
  struct stat info {};
  if (fstat(file, &info) != 0) return false;
  if (!S_ISREG(info.st_mode) || info.st_uid != geteuid() ||
      (info.st_size != 0 && info.st_size != static_cast<off_t>(kPageSize))) {
    errno = EACCES;
    return false;
  }
  return info.st_size != 0 || ftruncate(file, kPageSize) == 0;
}

// Makes the page the event `name`'s: a page nobody else has open starts
// afresh, one that others have open must hold the same name.
bool ClaimPage(TSharedPage& page, std::u16string_view name, bool sole) {
  if (sole) {
    page.Signalled.store(0, std::memory_order_relaxed);
    std::memcpy(page.Name, name.data(), name.size() * sizeof(char16_t));
    page.NameLength = static_cast<uint32_t>(name.size());
  } else if (std::u16string_view(page.Name, page.NameLength) != name) {
    errno = EEXIST;
    return false;
  }
  return true;
}

// Fills in `record` from the page open as record.File and takes this
// handle's shared flock on it; runs under the setup lock. Sets `removed`
// when the page lost its name before the setup lock was ours.
bool MapPage(TEventRecord& record, std::u16string_view name, bool& removed) {
  struct stat info {};
  if (fstat(record.File, &info) != 0) return false;
  removed = info.st_nlink == 0;
  if (removed || !PreparePage(record.File)) return false;
  void* memory = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, record.File, 0);
  if (memory == MAP_FAILED) return false;
  record.Page = static_cast<TSharedPage*>(memory);
  if (ClaimPage(*record.Page, name, IsSoleHandle(record.File)) && LockFile(record.File, LOCK_SH)) return true;
  munmap(memory, kPageSize);
  record.Page = nullptr;
  return false;
}

// Opens and maps the page of the event `name` into `record`; false with
// errno set on failure, leaving nothing open.
bool OpenSharedPage(TEventRecord& record, std::u16string_view name) {
  for (;;) {
    record.File = shm_open(record.SharedName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (record.File < 0) return false;
    bool removed = false;
    const bool mapped = LockSetup(record.File, F_WRLCK) && MapPage(record, name, removed);
    const int error = errno;
    LockSetup(record.File, F_UNLCK);
    if (mapped) return true;
    close(record.File);
    record.File = -1;
    errno = error;
    if (!removed) return false;
  }
}

// Unmaps the page and closes the handle, removing the page's name when this
// was its last handle.
void ReleaseSharedPage(TEventRecord& record) {
  struct stat info {};
  if (LockSetup(record.File, F_WRLCK) && IsSoleHandle(record.File) && fstat(record.File, &info) == 0 &&
      info.st_nlink != 0)
    shm_unlink(record.SharedName.c_str());
  munmap(record.Page, kPageSize);
  close(record.File);  // leaves both locks
}

long Futex(TStateWord* word, int operation, uint32_t value, const timespec* deadline) {
  return syscall(SYS_futex, reinterpret_cast<uint32_t*>(word), operation, value, deadline, nullptr,
                 FUTEX_BITSET_MATCH_ANY);
}

timespec DeadlineAfter(uint32_t timeoutMs) {
  timespec deadline{};
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += static_cast<time_t>(timeoutMs / 1000);
  deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000;
  if (deadline.tv_nsec >= 1000000000) {
    deadline.tv_sec += 1;
    deadline.tv_nsec -= 1000000000;
  }
  return deadline;
}

TEventRecord* RecordOf(EventHandle event) { return reinterpret_cast<TEventRecord*>(event); }

}  // namespace

EventHandle OpenEventObject(std::u16string_view name) {
  if (name.find(u'\0') != std::u16string_view::npos || name.size() > kMaxNameUnits) {
    errno = name.size() > kMaxNameUnits ? ENAMETOOLONG : EINVAL;
    return 0;
  }
  auto* record = new TEventRecord();
  record->State = &record->LocalState;
  if (!name.empty()) {
    record->SharedName = SharedNameOf(name);
    if (!OpenSharedPage(*record, name)) {
      const int error = errno;
      delete record;
      errno = error;
      return 0;
    }
    record->State = &record->Page->Signalled;
  }
  return reinterpret_cast<EventHandle>(record);
}

bool SignalEvent(EventHandle event) {
  if (event == 0) {
    errno = EBADF;
    return false;
  }
  TStateWord* state = RecordOf(event)->State;
  state->store(1, std::memory_order_release);
  Futex(state, FUTEX_WAKE, INT_MAX, nullptr);
  return true;
}

bool WaitEvent(EventHandle event, uint32_t timeoutMs) {
  if (event == 0) {
    errno = EBADF;
    return false;
  }
  TStateWord* state = RecordOf(event)->State;
  if (state->load(std::memory_order_acquire) != 0) return true;
  if (timeoutMs == 0) return false;
  const timespec deadline = DeadlineAfter(timeoutMs);
  const timespec* limit = timeoutMs == kWaitForever ? nullptr : &deadline;
  // A wake-up may be spurious or an interruption: only the word decides.
  while (state->load(std::memory_order_acquire) == 0)
    if (Futex(state, FUTEX_WAIT_BITSET, 0, limit) != 0 && errno == ETIMEDOUT)
      return state->load(std::memory_order_acquire) != 0;
  return true;
}

void CloseEvent(EventHandle event) {
  TEventRecord* record = RecordOf(event);
  if (record == nullptr) return;
  if (record->Page != nullptr) ReleaseSharedPage(*record);
  delete record;
}

}  // namespace Quorvex::Platform
