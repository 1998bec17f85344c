# 32-bit Arm in Thumb code with hard floats, as on the device, from a workstation: Clang 19, LLD and
# libc++ against the private sysroot that scripts/armv7-sysroot unpacks; tests run under user-mode
# emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armv7-sysroot)

# CMake reads the compiler's own folders from its output, in which ccache may have made paths relative.
set(ENV{CCACHE_DISABLE} 1)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabihf)
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mthumb -mfpu=neon -stdlib=libc++")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,--icf=safe")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
# The workstation provides the header-only dependencies.
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# All libraries of the emulated program come from the sysroot; with one of the workstation's its
# threads crash.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT}
  -E LD_LIBRARY_PATH=${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf:${CMAKE_SYSROOT}/lib/arm-linux-gnueabihf)
