// POSIX only: socket address conversions and handing a URL to the
// desktop's opener.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>

#include "Quorvex.Platform.Net.hpp"
#include "Quorvex.Platform.Unicode.hpp"

extern char** environ;

namespace Quorvex::Platform {

uint32_t InetAddr(const std::string& text) { return inet_addr(text.c_str()); }

std::u16string InetNtoa(uint32_t address) {
  in_addr value = {};
  value.s_addr = address;
  return Utf8ToUtf16(inet_ntoa(value));
}

void OpenInBrowser(std::u16string_view url) {
  // The shell starts xdg-open in the background and exits at once: the
  // opener is left to init, so the caller neither waits for the browser
  // nor keeps a zombie, and the only wait is for the shell.
  const std::string target = Utf16ToUtf8(url);
  char shell[] = "/bin/sh";
  char option[] = "-c";
  char script[] = "xdg-open \"$1\" &";
  char name[] = "sh";
  char* argv[] = {shell, option, script, name, const_cast<char*>(target.c_str()), nullptr};

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int fd = 0; fd <= 2; ++fd)
    posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", fd == 0 ? O_RDONLY : O_WRONLY, 0);
  pid_t pid = 0;
  if (posix_spawn(&pid, shell, &actions, nullptr, argv, environ) == 0) {
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  posix_spawn_file_actions_destroy(&actions);
}

}  // namespace Quorvex::Platform
