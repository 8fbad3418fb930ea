# GoogleTest: the installed one, else (a cross build finds none) Debian's sources of it.
include(GoogleTest)
find_package(GTest QUIET)
if(NOT GTest_FOUND)
  if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest is missing: install the Debian packages libgtest-dev libgmock-dev, "
      "or build without tests (-DBUILD_TESTING=OFF).")
  endif()
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
endif()
