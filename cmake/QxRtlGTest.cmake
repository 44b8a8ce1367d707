# Provides GTest::gtest, GTest::gtest_main, GTest::gmock for qxrtl_tests.
# Prefers an installed package (Debian's libgtest-dev natively; build/deps-mingw/prefix
# when cross compiling), else builds Debian's /usr/src/googletest inside this build tree.
find_package(GTest CONFIG QUIET)
if(GTest_FOUND AND TARGET GTest::gmock)
  message(STATUS "GoogleTest: using package at ${GTest_DIR}")
  return()
endif()

set(QXRTL_GOOGLETEST_SRC "/usr/src/googletest" CACHE PATH "GoogleTest source tree (Debian package googletest)")
if(NOT EXISTS "${QXRTL_GOOGLETEST_SRC}/CMakeLists.txt")
  message(FATAL_ERROR "GoogleTest not found: install libgtest-dev and libgmock-dev (scripts/install-deps.sh) "
    "or configure with -DQXRTL_BUILD_TESTS=OFF")
endif()
message(STATUS "GoogleTest: building from ${QXRTL_GOOGLETEST_SRC}")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
# Win32 threading inside gtest; its pthread mode changes class layouts under MinGW.
set(gtest_disable_pthreads ${WIN32} CACHE BOOL "" FORCE)
set(_qx_shared ${BUILD_SHARED_LIBS})
set(BUILD_SHARED_LIBS OFF)
add_subdirectory("${QXRTL_GOOGLETEST_SRC}" "${PROJECT_BINARY_DIR}/_deps/googletest" EXCLUDE_FROM_ALL SYSTEM)
set(BUILD_SHARED_LIBS ${_qx_shared})
