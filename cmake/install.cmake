# What `cmake --install` puts where, and the manual pages, which are made of the help texts.
include(GNUInstallDirs)

foreach(program IN LISTS vorel_programs)
  set(page ${CMAKE_BINARY_DIR}/man/${program}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/man_page.sh $<TARGET_FILE:${program}> ${PROJECT_VERSION} ${page}
    DEPENDS ${program} ${CMAKE_SOURCE_DIR}/scripts/man_page.sh VERBATIM)
  list(APPEND pages ${page})
  # Completions are looked for by the name of the program.
  install(FILES share/completions/vorel RENAME ${program}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
add_custom_target(man ALL DEPENDS ${pages})

install(TARGETS ${vorel_programs} RUNTIME)
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES share/vorel_gates.v DESTINATION ${CMAKE_INSTALL_DATADIR}/vorel)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
