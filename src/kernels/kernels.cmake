# The row loops: portable, and once per vector variant of the processor. Each variant compiles the same *_simd.cpp
# texts in a namespace of its own, and nothing else with its flags: a function that the linker could share with the
# rest must not carry instructions that the processor may lack.
set(kernel_families
  bilinear_rows color_rows face_rows half_ratio_rows network_rows plane_rows rotate_blocks)

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  set(kernel_variants avx2 avx512)
  set(kernel_flags_avx2 -mavx2 -mfma)
  # GCC 12's own header for these reads a value that it calls undefined, and warns of it.
  set(kernel_flags_avx512 ${kernel_flags_avx2} -mavx512f -mavx512bw -mavx512vl -mavx512vbmi
    $<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized> $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  if(MORVALE_COVERAGE)  # it is the AVX2 text, which is counted
    list(APPEND kernel_flags_avx512 -fno-profile-instr-generate -fno-coverage-mapping)
  endif()
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  set(kernel_variants neon)
endif()

list(TRANSFORM kernel_families REPLACE "(.+)" "kernels/\\1.cpp" OUTPUT_VARIABLE portable_sources)
list(APPEND portable_sources kernels/kernel_set.cpp kernels/processor.cpp kernels/set_portable.cpp)

set(kernel_objects)
foreach(variant IN LISTS kernel_variants)
  set(families ${kernel_families})
  if(variant STREQUAL avx512)
    set(families color_rows network_rows face_rows)  # the others gain nothing: kernels/set_simd.cpp
  endif()
  list(TRANSFORM families REPLACE "(.+)" "kernels/\\1_simd.cpp" OUTPUT_VARIABLE simd_sources)
  add_library(morvale_kernels_${variant} OBJECT ${simd_sources} kernels/set_simd.cpp)
  target_include_directories(morvale_kernels_${variant} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(morvale_kernels_${variant} PRIVATE MORVALE_VARIANT=${variant})
  target_compile_options(morvale_kernels_${variant} PRIVATE ${kernel_flags_${variant}})
  target_link_libraries(morvale_kernels_${variant} PRIVATE morvale_compile_options)
  set_target_properties(morvale_kernels_${variant} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  list(APPEND kernel_objects $<TARGET_OBJECTS:morvale_kernels_${variant}>)
endforeach()
