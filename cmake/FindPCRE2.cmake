# Finds PCRE2 with 16-bit code units and provides the imported target PCRE2::16BIT.
# Used by the library's own build and, installed beside QxRtlConfig.cmake, by the package's
# users when they link the static library. Honours PCRE2_ROOT and CMAKE_PREFIX_PATH.
find_path(PCRE2_INCLUDE_DIR pcre2.h)
find_library(PCRE2_16BIT_LIBRARY NAMES pcre2-16)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(PCRE2 REQUIRED_VARS PCRE2_16BIT_LIBRARY PCRE2_INCLUDE_DIR)
mark_as_advanced(PCRE2_INCLUDE_DIR PCRE2_16BIT_LIBRARY)

if(PCRE2_FOUND AND NOT TARGET PCRE2::16BIT)
  add_library(PCRE2::16BIT UNKNOWN IMPORTED)
  set_target_properties(PCRE2::16BIT PROPERTIES
    IMPORTED_LOCATION "${PCRE2_16BIT_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${PCRE2_INCLUDE_DIR}")
endif()
