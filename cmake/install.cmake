# What `cmake --install` lays down, in four components: `capture` (the library and all headers) and `kernels` (the image
# kernels for C), each with the CMake package and its pkg-config file, `standins` (a workstation's log, properties and
# neural runtime, and the recording shim) and `tools` (the program, its manual page and completion scripts).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/morvale)

# target, name behind morvale::, component
function(morvale_install target name component)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} EXPORT morvale_${component}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${component})
endfunction()

morvale_install(morvale_capture capture capture)
install(DIRECTORY include/morvale DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT capture)

morvale_install(morvale_kernels kernels kernels)
install(FILES include/morvale/morvale_kernels.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvale COMPONENT kernels)
install(FILES include/morvale/core/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvale/core COMPONENT kernels)

foreach(library IN ITEMS capture kernels)
  target_include_directories(morvale_${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()

morvale_install(morvale_host host standins)
morvale_install(vexa_vndk vexa_vndk standins)
install(TARGETS vexa_record LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT standins)
if(MORVALE_TOOLS)
  install(TARGETS vexa_onnx LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT standins)
  set_target_properties(morvale PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(morvale_pictures PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS morvale RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS morvale_pictures LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT tools)
  include(cmake/manual.cmake)
endif()

foreach(component IN ITEMS capture kernels standins)
  install(EXPORT morvale_${component} NAMESPACE morvale:: DESTINATION ${package_dir}
    FILE morvale_${component}.cmake COMPONENT ${component})
endforeach()
configure_package_config_file(cmake/morvaleConfig.cmake.in morvaleConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(morvaleConfigVersion.cmake COMPATIBILITY SameMajorVersion)

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
