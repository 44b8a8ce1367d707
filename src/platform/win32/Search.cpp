// Windows only: directory search over FindFirstFileW/FindNextFileW.
#include <memory>

#include "Quorvex.Platform.Win32.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

struct Search {
  HANDLE Handle = INVALID_HANDLE_VALUE;
  uint32_t Mask = 0;

  ~Search() {
    if (Handle != INVALID_HANDLE_VALUE) ::FindClose(Handle);
  }
};

// FILETIME counts 100 ns steps from 1601-01-01; 109205 days separate that
// from the date-time origin 1899-12-30.
double ToDateTime(const FILETIME& utc) {
  FILETIME local{};
  FileTimeToLocalFileTime(&utc, &local);
  const uint64_t ticks = (static_cast<uint64_t>(local.dwHighDateTime) << 32) | local.dwLowDateTime;
  return static_cast<double>(ticks) / 864e9 - 109205;
}

// Skips entries whose attributes do not fit the mask, starting with the
// one already in `found`; fills `data` with the first that does.
bool Accept(Search& search, WIN32_FIND_DATAW& found, FindData& data) {
  while (!FitsSearchMask(found.dwFileAttributes, search.Mask)) {
    if (!FindNextFileW(search.Handle, &found)) return false;
  }
  data.Name = Win32::FromWide(found.cFileName);
  data.Attributes = found.dwFileAttributes;
  data.Size = static_cast<int64_t>((static_cast<uint64_t>(found.nFileSizeHigh) << 32) | found.nFileSizeLow);
  data.TimeStamp = ToDateTime(found.ftLastWriteTime);
  return true;
}

}  // namespace

FindHandle FindFirst(PathView pattern, uint32_t mask, FindData& data) {
  const Win32::WidePath wide(pattern);
  if (!wide) return nullptr;
  auto search = std::make_unique<Search>();
  search->Mask = mask;
  WIN32_FIND_DATAW found{};
  search->Handle = FindFirstFileW(wide.c_str(), &found);
  if (search->Handle == INVALID_HANDLE_VALUE) return nullptr;
  if (!Accept(*search, found, data)) {
    const DWORD code = ::GetLastError();  // closing must not hide the reason
    search.reset();
    ::SetLastError(code);
    return nullptr;
  }
  return search.release();
}

bool FindNext(FindHandle handle, FindData& data) {
  auto& search = *static_cast<Search*>(handle);
  WIN32_FIND_DATAW found{};
  return FindNextFileW(search.Handle, &found) && Accept(search, found, data);
}

void FindClose(FindHandle handle) { delete static_cast<Search*>(handle); }

}  // namespace Quorvex::Platform
