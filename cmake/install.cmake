# What is installed beside the programs: their pages, completions, documents and examples.
include(GNUInstallDirs)
install(DIRECTORY man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
install(DIRECTORY completions/bash/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(DIRECTORY completions/zsh/ DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
# The README and the documents for those who use it, not for those who work on it.
install(FILES packaging/README.md packaging/copyright packaging/changelog TYPE DOC)
install(DIRECTORY docs examples TYPE DOC USE_SOURCE_PERMISSIONS
        PATTERN contributing.md EXCLUDE)
file(STRINGS packaging/changelog release LIMIT_COUNT 1)
if(NOT release MATCHES "^zelsvm \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "packaging/changelog does not begin with version ${PROJECT_VERSION}")
endif()

# For programs that use the library: its header, and a package that find_package(zelsvm) finds.
include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/zelsvm)
install(DIRECTORY include/zelsvm DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(EXPORT zelsvm FILE zelsvm-config.cmake NAMESPACE zelsvm:: DESTINATION ${package}
        COMPONENT dev)
write_basic_package_version_file(zelsvm-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zelsvm-config-version.cmake DESTINATION ${package}
        COMPONENT dev)
