# Cross build with Debian's arm64 compiler. TALVIK_AARCH64_SYSROOT names a root that holds the arm64
# libraries (ACE, net-snmp, ...); without it the compiler's own search path is used.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
if(TALVIK_AARCH64_SYSROOT)
    set(CMAKE_SYSROOT "${TALVIK_AARCH64_SYSROOT}")
    set(ENV{PKG_CONFIG_SYSROOT_DIR} "${TALVIK_AARCH64_SYSROOT}")
    set(ENV{PKG_CONFIG_LIBDIR} "${TALVIK_AARCH64_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${TALVIK_AARCH64_SYSROOT}/usr/share/pkgconfig")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
