/// Who this library is, as an ELF note, where any tool finds it and no name is exported: readelf -n shows it,
/// and of a stripped copy on a device it still tells the commit. Owner "Morvale", type 1, one line of text.
#if __has_include("build_commit.inc")
#include "build_commit.inc"  // made by every build: cmake/build_commit.cmake
#else
#define MORVALE_BUILD_VERSION "1.0.0"
#define MORVALE_BUILD_COMMIT "unknown"
#endif

#ifdef __clang__
#define MORVALE_COMPILER "clang " __clang_version__
#else
#define MORVALE_COMPILER "GCC " __VERSION__
#endif

#if defined(__x86_64__)
#define MORVALE_KERNEL_SETS "portable avx2 avx512"
#elif defined(__aarch64__)
#define MORVALE_KERNEL_SETS "portable neon"
#else
#define MORVALE_KERNEL_SETS "portable"
#endif

asm(".pushsection .note.morvale.build,\"a\",%note\n"
    ".balign 4\n"
    ".long 2f - 1f, 4f - 3f, 1\n"  // bytes of the owner, of the text; the type
    "1: .asciz \"Morvale\"\n"
    "2: .balign 4\n"
    "3: .asciz \"" MORVALE_BUILD_VERSION ", commit " MORVALE_BUILD_COMMIT ", " MORVALE_COMPILER
    ", kernels " MORVALE_KERNEL_SETS
    "\"\n"
    "4: .balign 4\n"
    ".popsection");
