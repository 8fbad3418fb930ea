# report_page_source: a C++ file with the report page in it, which tools/report/ builds with npm into one HTML file.
# The page's libraries come from npm while building, at the versions and hashes of package-lock.json.
set(page_folder ${PROJECT_SOURCE_DIR}/tools/report)
set(page_build ${PROJECT_BINARY_DIR}/tools/report)
set(report_page_source ${page_build}/report_template.cpp)

if(MORVALE_REPORT)
  find_program(NPM npm)
  find_program(NODE node)
  if(NOT NPM OR NOT NODE)
    message(FATAL_ERROR "The report page needs npm and node. Install them, or build without the page: "
      "-DMORVALE_REPORT=OFF.")
  endif()
  file(GLOB_RECURSE page_sources CONFIGURE_DEPENDS ${page_folder}/src/*)
  set(omit_test_tools)
  if(NOT BUILD_TESTING)
    set(omit_test_tools --omit=dev)
  endif()
  # npm writes beside package.json: it works on a copy, so that the sources stay clean and builds do not meet.
  add_custom_command(OUTPUT ${page_build}/node_modules/.installed
    COMMAND ${CMAKE_COMMAND} -E make_directory ${page_build}
    COMMAND ${CMAKE_COMMAND} -E copy ${page_folder}/package.json ${page_folder}/package-lock.json ${page_build}
    COMMAND ${NPM} ci --prefix ${page_build} ${omit_test_tools} --ignore-scripts --no-audit --no-fund --loglevel=error
      --fetch-retries=1 --fetch-retry-mintimeout=1000 --fetch-retry-maxtimeout=5000
    COMMAND ${CMAKE_COMMAND} -E touch ${page_build}/node_modules/.installed
    DEPENDS ${page_folder}/package.json ${page_folder}/package-lock.json
    COMMENT "Fetching the report page's libraries" VERBATIM)
  add_custom_command(OUTPUT ${page_build}/report.html
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${page_folder}/src ${page_build}/src
    COMMAND ${CMAKE_COMMAND} -E copy ${page_folder}/build.mjs ${page_build}
    COMMAND ${NODE} ${page_build}/build.mjs ${page_build}/report.html
    DEPENDS ${page_build}/node_modules/.installed ${page_folder}/build.mjs ${page_sources}
    COMMENT "Building the report page" VERBATIM)
  set(page_html ${page_build}/report.html)
else()
  set(page_html ${PROJECT_SOURCE_DIR}/cmake/no_report_page.html)
endif()

add_custom_command(OUTPUT ${report_page_source}
  COMMAND ${CMAKE_COMMAND} -DPAGE=${page_html} -DSOURCE=${report_page_source}
    -P ${PROJECT_SOURCE_DIR}/cmake/embed_page.cmake
  DEPENDS ${page_html} ${PROJECT_SOURCE_DIR}/cmake/embed_page.cmake
  COMMENT "Embedding the report page" VERBATIM)
