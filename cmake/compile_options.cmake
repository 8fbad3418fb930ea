# What every target of ours is compiled with. No contraction of multiply and add: the records must come out the
# same on every processor.
add_library(morvale_compile_options INTERFACE)
target_compile_options(morvale_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off
  # Without optimisation GCC's intrinsics are macros, and it warns of the conversions in them.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Debug>>:-Wno-conversion>
  # GCC 12 sees overlapping copies in "text" + std::to_string(n) where there are none (its bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(MORVALE_KERNELS_FROM_ENVIRONMENT)
  target_compile_definitions(morvale_compile_options INTERFACE MORVALE_KERNELS_FROM_ENVIRONMENT)
endif()
if(MORVALE_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options(${sanitizers})
  add_link_options(${sanitizers})
endif()
