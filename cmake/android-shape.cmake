# The Android build without an NDK, to look at and to test: clang for Android's own target with libc++'s headers and
# the C headers of Debian's cross compiler. The library is linked against nothing, as if its needs were met on the
# device; the programs are linked for Linux, so that they run in an emulator with Debian's libc++ for 64-bit Arm.
# Packages: clang, lld, libc++-14-dev, g++-aarch64-linux-gnu, qemu-user; `./dev android` fetches the library and names its folder.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(ANDROID TRUE)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-android30)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc++ -isystem /usr/lib/llvm-14/include/c++/v1 -isystem /usr/aarch64-linux-gnu/include")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-nostdlib -fuse-ld=lld")
# For the empty libdl.a. Not among the flags above: a build folder would keep those that it was first made with.
add_link_options(-L/usr/aarch64-linux-gnu/lib)

set(MORVALE_ARM64_LIBCXX "$ENV{MORVALE_ARM64_LIBCXX}" CACHE PATH "Folder of libc++.so.1 for 64-bit Arm")
set(CMAKE_EXE_LINKER_FLAGS_INIT "--target=aarch64-linux-gnu -fuse-ld=lld -nostdlib++ -L${MORVALE_ARM64_LIBCXX} \
-l:libc++.so.1 -l:libc++abi.so.1 -l:libunwind.so.1 -Wl,--allow-shlib-undefined -Wl,--export-dynamic")
find_program(QEMU_AARCH64 NAMES qemu-aarch64 qemu-aarch64-static REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${QEMU_AARCH64};-L;/usr/aarch64-linux-gnu;-E;LD_LIBRARY_PATH=${MORVALE_ARM64_LIBCXX}")

# Nothing of the machine that builds: its libraries are for another processor.
set(CMAKE_FIND_ROOT_PATH /nonexistent)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
