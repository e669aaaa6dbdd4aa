# What is installed beside the programs: their pages, completions, documents and examples.
include(GNUInstallDirs)
install(DIRECTORY man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
install(DIRECTORY completions/bash/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(DIRECTORY completions/zsh/ DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(DIRECTORY docs examples TYPE DOC USE_SOURCE_PERMISSIONS)
file(GLOB licence LICENSE* LICENCE* COPYING*)
install(FILES ${licence} TYPE DOC)
