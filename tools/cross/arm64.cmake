# CMake's toolchain file for arm64: Debian's cross compiler against the sysroot that
# tools/cross/sysroot makes, and QEMU for whatever a build or a test starts.
if(NOT VELA_SYSROOT)
  set(VELA_SYSROOT ${CMAKE_BINARY_DIR}/../arm64-sysroot)
  cmake_path(NORMAL_PATH VELA_SYSROOT)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELA_SYSROOT)
if(NOT EXISTS ${VELA_SYSROOT}/packages)
  message(FATAL_ERROR "There is no sysroot at ${VELA_SYSROOT}: tools/cross/sysroot makes it.")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_SYSROOT ${VELA_SYSROOT})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L ${VELA_SYSROOT})

# Libraries are those of the sysroot, programs those of this machine.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${VELA_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
  ${VELA_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${VELA_SYSROOT}/usr/share/pkgconfig)

# The Debian package.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/package.cmake)
set(CPACK_VELA_SYSROOT ${VELA_SYSROOT})
set(VELA_DPKG_DATABASE --admindir=${VELA_SYSROOT}/var/lib/dpkg)
