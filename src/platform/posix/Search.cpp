// POSIX only: directory search with Windows-style wildcards on Linux.
#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "Quorvex.Platform.Posix.hpp"
#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

struct Search {
  DIR* Directory = nullptr;
  std::string Folder;  // with its trailing delimiter, UTF-8
  std::u16string Pattern;
  uint32_t Mask = 0;

  ~Search() {
    if (Directory != nullptr) closedir(Directory);
  }
};

// Matches "*" (any run) and "?" (one character), case-sensitively. On a
// mismatch it retries from the last "*" one character further, so the
// work stays proportional to name length times pattern length.
bool WildcardMatch(std::u16string_view pattern, std::u16string_view name) {
  // "*.*" means every name, with or without a dot.
  if (pattern == u"*.*") pattern = u"*";
  size_t p = 0, n = 0;
  size_t starP = std::u16string_view::npos, starN = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
      ++p;
      ++n;
    } else if (p < pattern.size() && pattern[p] == u'*') {
      starP = p++;
      starN = n;
    } else if (starP != std::u16string_view::npos) {
      p = starP + 1;
      n = ++starN;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == u'*') ++p;
  return p == pattern.size();
}

// Advances to the next entry that matches the pattern and the mask; sets
// ENOENT at the end, as Windows reports "no more files" through a code.
bool NextMatch(Search& search, FindData& data) {
  while (const dirent* entry = readdir(search.Directory)) {
    const std::u16string name = NameToUtf16(entry->d_name);
    if (!WildcardMatch(search.Pattern, name)) continue;
    const std::string full = search.Folder + entry->d_name;
    struct stat link {};
    if (lstat(full.c_str(), &link) != 0) continue;
    // A link is described by its target (itself when dangling) and marked
    // as a link; a link to a folder is not reported as a folder, so tree
    // walkers remove the link instead of descending into its target.
    struct stat info {};
    if (!S_ISLNK(link.st_mode) || stat(full.c_str(), &info) != 0) info = link;
    uint32_t attributes = Posix::AttributesOf(info, name);
    if (S_ISLNK(link.st_mode)) attributes = (attributes & ~faDirectory) | faSymLink;
    if (!FitsSearchMask(attributes, search.Mask)) continue;
    data.Name = name;
    data.Attributes = attributes;
    data.Size = S_ISDIR(info.st_mode) ? 0 : static_cast<int64_t>(info.st_size);
    data.TimeStamp = Posix::ToDateTime(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
    return true;
  }
  errno = ENOENT;
  return false;
}

}  // namespace

FindHandle FindFirst(PathView pattern, uint32_t mask, FindData& data) {
  if (!Posix::IsValidPath(pattern)) return nullptr;
  auto search = std::make_unique<Search>();
  const size_t delimiter = pattern.rfind(u'/');
  if (delimiter == PathView::npos) {
    search->Folder = "./";
    search->Pattern = pattern;
  } else {
    const Posix::NativePath folder(pattern.substr(0, delimiter + 1));
    if (!folder) return nullptr;
    search->Folder = folder.str();
    search->Pattern = pattern.substr(delimiter + 1);
  }
  search->Mask = mask;
  search->Directory = opendir(search->Folder.c_str());
  if (search->Directory == nullptr) return nullptr;
  if (!NextMatch(*search, data)) {
    const int code = errno;  // closing the folder must not hide the reason
    search.reset();
    errno = code;
    return nullptr;
  }
  return search.release();
}

bool FindNext(FindHandle handle, FindData& data) { return NextMatch(*static_cast<Search*>(handle), data); }

void FindClose(FindHandle handle) { delete static_cast<Search*>(handle); }

}  // namespace Quorvex::Platform
