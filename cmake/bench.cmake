# The benchmark, with the libraries that it measures itself against (Debian: libbenchmark-dev, libyuv-dev and the
# OpenCV modules).
find_package(benchmark REQUIRED)
find_path(MORVALE_LIBYUV_INCLUDE libyuv.h REQUIRED)
find_library(MORVALE_LIBYUV_LIBRARY yuv REQUIRED)
mark_as_advanced(MORVALE_LIBYUV_INCLUDE MORVALE_LIBYUV_LIBRARY)
if(NOT TARGET morvale_opencv)
  include(${CMAKE_CURRENT_LIST_DIR}/opencv.cmake)
endif()
add_subdirectory(bench)
