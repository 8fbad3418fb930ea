# What a build for a device asks of the compiler and the linker, whoever's toolchain file it is: branches land only
# where they may and return addresses are signed (BTI, PAC), stacks are guarded, all symbols are bound at the start and
# what holds them is read-only afterwards, and pages may have 16 KiB.
add_compile_options(-mbranch-protection=standard -fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,max-page-size=16384)

# The platform's log and the neural runtime. Where one is missing, its functions stay undefined and must be there when
# the library is loaded.
find_library(MORVALE_LOG_LIBRARY log)
find_library(MORVALE_VEXA_LIBRARY vexa_vndk)
function(morvale_link_platform target)
  foreach(library IN ITEMS ${MORVALE_LOG_LIBRARY} ${MORVALE_VEXA_LIBRARY})
    if(library)
      target_link_libraries(${target} PRIVATE ${library})
    endif()
  endforeach()
  if(NOT MORVALE_LOG_LIBRARY OR NOT MORVALE_VEXA_LIBRARY)
    target_link_options(${target} PRIVATE -Wl,-z,undefs)
  endif()
endfunction()
