# Cross compile for Windows x64 with Debian's MinGW-w64 (posix threads flavour).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(_qx_triple x86_64-w64-mingw32)

set(CMAKE_C_COMPILER ${_qx_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_qx_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${_qx_triple}-windres)

# Static runtime (libstdc++, libgcc, winpthread) so the .exe runs under Wine as is.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Third-party libraries built for MinGW by scripts/deps-mingw.sh.
get_filename_component(_qx_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
set(QXRTL_DEPS_PREFIX "${_qx_root}/build/deps-mingw/prefix" CACHE PATH "Prefix of MinGW-built dependencies")
set(CMAKE_FIND_ROOT_PATH /usr/${_qx_triple} "${QXRTL_DEPS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs the Windows binaries through Wine (prefix and server handled by the script).
set(CMAKE_CROSSCOMPILING_EMULATOR "/bin/bash;${_qx_root}/scripts/wine.sh;run")
