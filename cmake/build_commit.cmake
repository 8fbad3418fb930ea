# Writes what the library's build note says of its sources into OUT, and leaves the file alone where that has not changed:
#   cmake -DSOURCE=folder -DVERSION=1.0.0 -DOUT=file -P build_commit.cmake
# Without git, or outside of a clone, the commit is unknown.
cmake_minimum_required(VERSION 3.25)
set(commit unknown)
find_program(git git)
if(git AND EXISTS ${SOURCE}/.git)
  execute_process(COMMAND ${git} -C ${SOURCE} describe --always --dirty --abbrev=12 --exclude=*
    OUTPUT_VARIABLE described OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(NOT failed)
    set(commit ${described})
  endif()
endif()
file(CONFIGURE OUTPUT ${OUT} CONTENT "#define MORVALE_BUILD_VERSION \"@VERSION@\"
#define MORVALE_BUILD_COMMIT \"@commit@\"
" @ONLY)
