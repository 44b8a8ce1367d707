// POSIX only: path delimiter, current directory and the lexical path
// computations that Windows does in its shell path functions.
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <vector>

#include "Quorvex.Platform.Posix.hpp"
#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

constexpr char16_t kDelimiter = u'/';
// Results must fit a Windows MAX_PATH buffer with its terminating null, so
// both platforms accept and refuse the same paths.
constexpr size_t kMaxPath = 260;

bool StartsWithDelimiter(PathView path) { return !path.empty() && path.front() == kDelimiter; }

// Resolves "." and ".." segments without touching the file system. ".."
// never climbs above the start; empty segments (doubled delimiters) stay
// unless `dropEmpty`. A trailing delimiter survives, one after a final "."
// or ".." does not.
Path ResolveDots(PathView path, bool dropEmpty) {
  std::vector<PathView> segments;
  bool trailingDelimiter = false;
  size_t start = StartsWithDelimiter(path) ? 1 : 0;
  while (start <= path.size()) {
    size_t end = path.find(kDelimiter, start);
    if (end == PathView::npos) end = path.size();
    const PathView segment = path.substr(start, end - start);
    const bool last = end == path.size();
    trailingDelimiter = false;
    if (segment == u"..") {
      if (!segments.empty()) segments.pop_back();
    } else if (segment.empty()) {
      if (last) {
        trailingDelimiter = !segments.empty();
      } else if (!dropEmpty) {
        segments.push_back(segment);
      }
    } else if (segment != u".") {
      segments.push_back(segment);
    }
    start = end + 1;
  }
  Path result = StartsWithDelimiter(path) ? Path(1, kDelimiter) : Path();
  for (size_t i = 0; i < segments.size(); ++i) {
    if (i > 0) result += kDelimiter;
    result += segments[i];
  }
  if (trailingDelimiter) result += kDelimiter;
  return result;
}

// The folder part of a file path, as PathRemoveFileSpecW leaves it: the
// root keeps its delimiter, a bare name leaves nothing.
PathView RemoveFileSpec(PathView path) {
  const size_t delimiter = path.rfind(kDelimiter);
  if (delimiter == PathView::npos) return {};
  return path.substr(0, delimiter == 0 ? 1 : delimiter);
}

// Length of the leading whole segments that `a` and `b` share; the root
// delimiter counts as one when both start with it. 0 when they share none.
size_t CommonPrefix(PathView a, PathView b) {
  size_t length = 0;
  for (size_t i = 0;; ++i) {
    const bool endA = i == a.size() || a[i] == kDelimiter;
    const bool endB = i == b.size() || b[i] == kDelimiter;
    if (endA && endB) length = i;
    if (i == a.size() || i == b.size() || a[i] != b[i]) break;
  }
  if (length == 0 && StartsWithDelimiter(a) && StartsWithDelimiter(b)) length = 1;
  return length;
}

bool Fail(int code) {
  errno = code;
  return false;
}

}  // namespace

namespace Posix {

bool IsValidPath(PathView path) {
  if (path.find(u'\0') == PathView::npos) return true;
  errno = EINVAL;
  return false;
}

NativePath::NativePath(PathView path) : FValid(IsValidPath(path) && NameToUtf8(path, FText)) {
  if (!FValid) errno = EINVAL;
}

}  // namespace Posix

char16_t PathDelimiter() { return kDelimiter; }

Path CurrentDirectory() {
  std::vector<char> buffer(PATH_MAX);
  while (getcwd(buffer.data(), buffer.size()) == nullptr) {
    if (errno != ERANGE) return {};
    buffer.resize(buffer.size() * 2);
  }
  return NameToUtf16(buffer.data());
}

Path FullPathName(PathView path) {
  if (path.empty()) {
    errno = EINVAL;
    return {};
  }
  if (!Posix::IsValidPath(path)) return {};
  if (StartsWithDelimiter(path)) return ResolveDots(path, true);
  Path absolute = CurrentDirectory();
  if (absolute.empty()) return {};
  if (absolute.back() != kDelimiter) absolute += kDelimiter;
  absolute += path;
  return ResolveDots(absolute, true);
}

bool CanonicalizePath(PathView path, Path& result) {
  result.clear();
  if (!Posix::IsValidPath(path)) return false;
  if (path.size() >= kMaxPath) return Fail(ENAMETOOLONG);
  Path canonical = ResolveDots(path, false);
  // An empty result means the root, as on Windows.
  if (canonical.empty()) canonical = Path(1, kDelimiter);
  if (canonical.size() >= kMaxPath) return Fail(ENAMETOOLONG);
  result = std::move(canonical);
  return true;
}

bool RelativePath(PathView from, PathView to, Path& result) {
  result.clear();
  if (!Posix::IsValidPath(from) || !Posix::IsValidPath(to)) return false;
  if (from.size() >= kMaxPath || to.size() >= kMaxPath) return Fail(ENAMETOOLONG);
  const size_t common = CommonPrefix(from, RemoveFileSpec(to));
  if (common == 0) return Fail(EINVAL);

  // Climb out of what remains of `from`, one ".." per segment...
  Path relative;
  PathView rest = from.substr(common);
  if (rest.empty()) relative.push_back(u'.');
  if (StartsWithDelimiter(rest)) rest.remove_prefix(1);
  while (!rest.empty()) {
    const size_t delimiter = rest.find(kDelimiter);
    rest = delimiter == PathView::npos ? PathView() : rest.substr(delimiter + 1);
    relative += u"..";
    if (!rest.empty()) relative += kDelimiter;
  }
  // ...then descend into `to` from the shared part, delimiter included.
  if (common < to.size()) {
    const PathView tail = to.substr(to[common] == kDelimiter ? common : common - 1);
    if (relative.size() + tail.size() >= kMaxPath) return Fail(ENAMETOOLONG);
    relative += tail;
  }
  result = std::move(relative);
  return true;
}

}  // namespace Quorvex::Platform
