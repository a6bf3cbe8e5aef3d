# What `cmake --install <build> [--prefix <P>]` puts where (GNUInstallDirs):
#   <P>/lib/libtqfgenv8.so.7.0, .so.7, .so    the transforms (RUNPATH $ORIGIN only)
#   <P>/lib/libtqfcore.so.7.0, .so.7, .so     the allocator it imports
#   <P>/include/tqfgen/tqfgen.h, tqfgen_kernels.h, tqfcore.h
#   <P>/lib/cmake/tqfgen/                     find_package(tqfgen CONFIG): tqfgen::tqfgen
#   <P>/lib/pkgconfig/tqfgen.pc               pkg-config --cflags --libs tqfgen
# The headers keep a folder of their own, and that folder is the include
# path, so that `#include "tqfgen.h"` reads the same against the build tree
# and an installed prefix. Every installed path is relative to the prefix:
# the prefix may be moved after installation.
include(CMakePackageConfigHelpers)

set(TQF_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/tqfgen)
set(TQF_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/tqfgen)

install(TARGETS tqfgenv8 tqfcore EXPORT tqfgenTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
                NAMELINK_COMPONENT Development
        INCLUDES DESTINATION ${TQF_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/frame/tqfgen.h ${TQF_SURFACE_DIR}/tqfgen_kernels.h
              ${PROJECT_SOURCE_DIR}/core/tqfcore.h
        DESTINATION ${TQF_INSTALL_INCLUDEDIR} COMPONENT Development)

# CMake package: tqfgen::tqfgen (libtqfgenv8) and tqfgen::tqfcore, which the
# first links publicly. The version file accepts requests of the same major
# version, and only from builds of the same pointer size.
install(EXPORT tqfgenTargets NAMESPACE tqfgen:: DESTINATION ${TQF_INSTALL_CMAKEDIR}
        COMPONENT Development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tqfgenConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/tqfgenConfig.cmake
                              INSTALL_DESTINATION ${TQF_INSTALL_CMAKEDIR}
                              PATH_VARS TQF_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tqfgenConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tqfgenConfig.cmake ${PROJECT_BINARY_DIR}/tqfgenConfigVersion.cmake
        DESTINATION ${TQF_INSTALL_CMAKEDIR} COMPONENT Development)

# pkg-config file: the prefix is found from the file's own folder.
function(tqf_pc_path var dir)
  if(IS_ABSOLUTE ${dir})
    set(${var} ${dir} PARENT_SCOPE)
  else()
    set(${var} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(TQF_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH _tqf_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" _tqf_up "${_tqf_up}")
  set(TQF_PC_PREFIX "\${pcfiledir}/${_tqf_up}")
endif()
tqf_pc_path(TQF_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
tqf_pc_path(TQF_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(${PROJECT_SOURCE_DIR}/cmake/tqfgen.pc.in ${PROJECT_BINARY_DIR}/tqfgen.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tqfgen.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT Development)
