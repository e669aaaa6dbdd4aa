# Run by CPack on the installed files before they are packed: what only one kind of package has.
set(source ${CMAKE_CURRENT_LIST_DIR}/../packaging)
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY})

# The newest version of a library's symbols that the program asks for.
function(newest_symbol_version output program prefix)
  execute_process(COMMAND objdump -T ${program} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "${prefix}_[0-9.]+" versions "${symbols}")
  list(SORT versions COMPARE NATURAL ORDER DESCENDING)
  list(GET versions 0 newest)
  string(REPLACE "${prefix}_" "" newest ${newest})
  set(${output} ${newest} PARENT_SCOPE)
endfunction()

if(CPACK_GENERATOR STREQUAL TGZ)
  newest_symbol_version(GLIBC ${root}/bin/zelsvm GLIBC)
  newest_symbol_version(GLIBCXX ${root}/bin/zelsvm GLIBCXX)
  configure_file(${source}/INSTALL.txt.in ${root}/INSTALL.txt @ONLY)
  return()
endif()

# Debian's places and forms. Each package says by itself how it may be used and what changed.
set(share ${root}/tools/usr/share)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(folder ${root}/${component}/usr/share/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  file(COPY ${source}/copyright ${source}/changelog DESTINATION ${folder})
  execute_process(COMMAND gzip -9nf ${folder}/changelog COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(GLOB pages ${share}/man/man1/*.1)
execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
