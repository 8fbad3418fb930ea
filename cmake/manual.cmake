# The manual page and the completion scripts, which the program itself prints. A program for another machine cannot run
# here; its package goes without them.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

set(manual_files)
# file in the build folder, where it is installed and under which name, what the program is asked for
function(morvale_printed file folder name)
  set(path ${PROJECT_BINARY_DIR}/manual/${file})
  add_custom_command(OUTPUT ${path} DEPENDS morvale VERBATIM COMMENT "Printing ${file}"
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/manual
    COMMAND morvale ${ARGN} > ${path})
  install(FILES ${path} DESTINATION ${folder} RENAME ${name} COMPONENT tools)
  set(manual_files ${manual_files} ${path} PARENT_SCOPE)
endfunction()

morvale_printed(morvale.1 ${CMAKE_INSTALL_MANDIR}/man1 morvale.1 manual)
morvale_printed(morvale.bash ${CMAKE_INSTALL_DATADIR}/bash-completion/completions morvale completion bash)
morvale_printed(morvale.zsh ${CMAKE_INSTALL_DATADIR}/zsh/site-functions _morvale completion zsh)
add_custom_target(manual ALL DEPENDS ${manual_files})
