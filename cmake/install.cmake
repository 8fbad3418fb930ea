# What `cmake --install` lays down, in four components: `capture` (the library and all headers) and `kernels` (the image
# kernels for C), each with the CMake package and its pkg-config file, `standins` (a workstation's log, properties and
# neural runtime, and the recording shim) and `tools` (the program, its manual page and completion scripts).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/morvale)
# What is no library of the system: modules, and stand-ins, whose names carry no version because a device's do not.
set(own_dir ${CMAKE_INSTALL_LIBDIR}/morvale)

# target, name behind morvale::, component, folder
function(morvale_install target name component folder)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} EXPORT morvale_${component}
    LIBRARY DESTINATION ${folder} COMPONENT ${component} NAMELINK_COMPONENT ${component})
endfunction()

morvale_install(morvale_capture capture capture ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/morvale DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT capture)

morvale_install(morvale_kernels kernels kernels ${CMAKE_INSTALL_LIBDIR})
install(FILES include/morvale/morvale_kernels.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvale COMPONENT kernels)
install(FILES include/morvale/core/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvale/core COMPONENT kernels)

foreach(library IN ITEMS capture kernels)
  target_include_directories(morvale_${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()

morvale_install(morvale_host host standins ${own_dir})
morvale_install(vexa_vndk vexa_vndk standins ${own_dir})
install(TARGETS vexa_record LIBRARY DESTINATION ${own_dir} COMPONENT standins)
if(MORVALE_TOOLS)
  install(TARGETS vexa_onnx LIBRARY DESTINATION ${own_dir} COMPONENT standins)
  set_target_properties(morvale PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN/../${own_dir}")
  set_target_properties(morvale_pictures morvale_video PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/..")
  install(TARGETS morvale RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS morvale_pictures morvale_video LIBRARY DESTINATION ${own_dir} COMPONENT tools)
  include(cmake/manual.cmake)
endif()

foreach(component IN ITEMS capture kernels standins)
  install(EXPORT morvale_${component} NAMESPACE morvale:: DESTINATION ${package_dir}
    FILE morvale_${component}.cmake COMPONENT ${component})
endforeach()
configure_package_config_file(cmake/morvaleConfig.cmake.in morvaleConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(morvaleConfigVersion.cmake COMPATIBILITY SameMajorVersion)

# The files find the rest from where they lie, so that an installed tree may move.
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})

# component, its pkg-config file
function(morvale_install_pkgconfig component name)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()

morvale_install_pkgconfig(capture morvale)
morvale_install_pkgconfig(kernels morvale-kernels)
morvale_install_pkgconfig(standins morvale-standins)
foreach(component IN ITEMS capture kernels)  # each may be installed without the other
  install(FILES ${PROJECT_BINARY_DIR}/morvaleConfig.cmake ${PROJECT_BINARY_DIR}/morvaleConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT ${component})
endforeach()
