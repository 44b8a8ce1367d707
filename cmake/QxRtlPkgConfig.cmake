# Writes and installs qxrtl.pc for users who build without CMake:
#   c++ -std=c++20 app.cpp $(pkg-config --cflags --libs qxrtl)
# Paths are relative to the file's own folder, so the installed tree may be moved. A static
# library's dependencies go into the public fields: its users cannot link without them.
file(RELATIVE_PATH _qx_pc_up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
set(QXRTL_PC_PREFIX "\${pcfiledir}/${_qx_pc_up}")
list(TRANSFORM QXRTL_SYSTEM_LIBRARIES PREPEND "-l" OUTPUT_VARIABLE _qx_pc_libs)
list(JOIN _qx_pc_libs " " _qx_pc_libs)
list(JOIN QXRTL_PC_REQUIRES " " _qx_pc_requires)
set(_qx_pc_defines ${QXRTL_SYSTEM_DEFINITIONS} ${QXRTL_PUBLIC_DEFINITIONS})
list(TRANSFORM _qx_pc_defines PREPEND "-D")
list(JOIN _qx_pc_defines " " QXRTL_PC_CFLAGS)
if(QXRTL_SHARED)
  set(QXRTL_PC_FIELDS "Requires.private: ${_qx_pc_requires}\nLibs: -L\${libdir} -lqxrtl\nLibs.private: ${_qx_pc_libs}")
else()
  set(QXRTL_PC_FIELDS "Requires: ${_qx_pc_requires}\nLibs: -L\${libdir} -lqxrtl ${_qx_pc_libs}")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/qxrtl.pc.in" "${PROJECT_BINARY_DIR}/qxrtl.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/qxrtl.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
