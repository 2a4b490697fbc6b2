# Cross build with Debian's arm64 compiler. TALVIK_AARCH64_SYSROOT names a root that holds the arm64 libraries (ACE, net-snmp,
# ...); tools/dev/sysroot.sh makes one. What is built runs here under qemu's user-mode emulation.
if(NOT EXISTS "${TALVIK_AARCH64_SYSROOT}/usr/lib/aarch64-linux-gnu")
    message(FATAL_ERROR "TALVIK_AARCH64_SYSROOT (\"${TALVIK_AARCH64_SYSROOT}\") must name a root with arm64 libraries. "
        "./dev build aarch64 makes one in build/sysroot-aarch64.")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TALVIK_AARCH64_SYSROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_SYSROOT "${TALVIK_AARCH64_SYSROOT}")
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-aarch64;-L;${TALVIK_AARCH64_SYSROOT}")

# pkg-config runs while CMake does, and this file is read each time.
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${TALVIK_AARCH64_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${TALVIK_AARCH64_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${TALVIK_AARCH64_SYSROOT}/usr/share/pkgconfig")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
