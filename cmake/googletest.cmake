# GoogleTest: the installed one, else (a cross build finds none) Debian's sources of it.
include(GoogleTest)
find_package(GTest QUIET)
if(NOT GTest_FOUND)
  if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest is missing: install the Debian packages libgtest-dev libgmock-dev, "
      "or build without tests (-DBUILD_TESTING=OFF).")
  endif()
  set(INSTALL_GTEST OFF)
  # GCC 12's false alarms in it are not ours.
  set(our_warnings_as_errors ${CMAKE_COMPILE_WARNING_AS_ERROR})
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ${our_warnings_as_errors})
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
endif()
