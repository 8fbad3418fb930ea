# What every target of ours is compiled with. Warnings are errors in our presets alone: one that a newer compiler adds
# must not stop a user's build. No contraction of multiply and add: the records must come out the same on every processor.
add_library(morvale_compile_options INTERFACE)
target_compile_options(morvale_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
  # Without optimisation GCC's intrinsics are macros, and it warns of the conversions in them.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Debug>>:-Wno-conversion>
  # GCC 12 sees overlapping copies in "text" + std::to_string(n) where there are none (its bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(MORVALE_KERNELS_FROM_ENVIRONMENT)
  target_compile_definitions(morvale_compile_options INTERFACE MORVALE_KERNELS_FROM_ENVIRONMENT)
endif()
if(MORVALE_SANITIZE)
  set(sanitizers -fsanitize=${MORVALE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options(${sanitizers})
  add_link_options(${sanitizers})
endif()
if(MORVALE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,float-cast-overflow)
endif()
# For the folders whose code is counted; whatever links it is linked so.
macro(morvale_count_coverage)
  if(MORVALE_COVERAGE)
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  endif()
endmacro()
if(MORVALE_COVERAGE)
  add_link_options(-fprofile-instr-generate)
endif()

# Headers that most files of a target include, read once: two thirds of a small file's compilation are its headers.
#   morvale_precompile(target PRIVATE <header>...)
#   morvale_precompile(target REUSE_FROM other)   compiled alike: as optimised, as visible, as position-independent
# ccache keeps nothing that is compiled with them, so not with ccache; a build with it also proves that no file leans on
# them. GCC 12 then takes the standard library's strings for ours, and warns of copies that are not there.
function(morvale_precompile target)
  if(NOT CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache")
    target_precompile_headers(${target} ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
    endif()
  endif()
endfunction()

# What walks over no pixels: a third of its compilation would go into optimising it.
function(morvale_seldom_run)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    foreach(target IN LISTS ARGN)
      target_compile_options(${target} PRIVATE -O1)
    endforeach()
  endif()
endfunction()
