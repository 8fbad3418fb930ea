# morvale_opencv: the OpenCV modules that the tools and the runtime stand-in use. Debian's module packages bring no
# OpenCVConfig.cmake (only the far larger libopencv-dev does), so without it each module is found by its header and
# library.
set(morvale_opencv_modules core imgproc imgcodecs videoio objdetect dnn)
add_library(morvale_opencv INTERFACE)
# Of its modules, those that a target uses: what reads pictures or videos brings over a hundred libraries each, which take
# a tenth of a second to load.
target_link_options(morvale_opencv INTERFACE -Wl,--as-needed)

find_package(OpenCV QUIET COMPONENTS ${morvale_opencv_modules})
if(OpenCV_FOUND)
  target_include_directories(morvale_opencv SYSTEM INTERFACE ${OpenCV_INCLUDE_DIRS})
  target_link_libraries(morvale_opencv INTERFACE ${OpenCV_LIBS})
else()
  set(missing)
  foreach(module IN LISTS morvale_opencv_modules)
    find_path(MORVALE_OPENCV_${module}_INCLUDE opencv2/${module}.hpp PATH_SUFFIXES opencv4)
    find_library(MORVALE_OPENCV_${module}_LIBRARY opencv_${module})
    mark_as_advanced(MORVALE_OPENCV_${module}_INCLUDE MORVALE_OPENCV_${module}_LIBRARY)
    if(MORVALE_OPENCV_${module}_INCLUDE AND MORVALE_OPENCV_${module}_LIBRARY)
      target_include_directories(morvale_opencv SYSTEM INTERFACE ${MORVALE_OPENCV_${module}_INCLUDE})
      target_link_libraries(morvale_opencv INTERFACE ${MORVALE_OPENCV_${module}_LIBRARY})
    else()
      list(APPEND missing libopencv-${module}-dev)
    endif()
  endforeach()
  if(missing)
    list(JOIN missing " " missing)
    message(FATAL_ERROR "OpenCV is incomplete. Install these Debian packages: ${missing} "
      "(or build the library alone with -DMORVALE_TOOLS=OFF).")
  endif()
endif()
