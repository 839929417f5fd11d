# What `cmake --install` puts where: the tool in bin/, its manual page in share/man/man1/, the
# metadata format, its XML Schema and the examples in share/doc/dicapsule/, the modules in
# lib/dicapsule/.

include(GNUInstallDirs)

install(TARGETS dicapsule RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/metadata-format.md ${PROJECT_SOURCE_DIR}/docs/metadata.xsd
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
# examples/out/ is where scripts/demo writes; it is not part of the examples.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        PATTERN out EXCLUDE)

# The manual page is written from the built tool's usage texts, so it is rebuilt with the tool.
if(UNIX)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(DICAPSULE_MANPAGE ${PROJECT_BINARY_DIR}/dicapsule.1)
  add_custom_command(OUTPUT ${DICAPSULE_MANPAGE}
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/docs/man/make_manpage.py
            --tool $<TARGET_FILE:dicapsule> --template ${PROJECT_SOURCE_DIR}/docs/man/dicapsule.1.in
            --version ${PROJECT_VERSION} --output ${DICAPSULE_MANPAGE}
    DEPENDS dicapsule ${PROJECT_SOURCE_DIR}/docs/man/make_manpage.py
            ${PROJECT_SOURCE_DIR}/docs/man/dicapsule.1.in
    COMMENT "Writing the dicapsule(1) manual page"
    VERBATIM)
  add_custom_target(dicapsule_manpage ALL DEPENDS ${DICAPSULE_MANPAGE})
  install(FILES ${DICAPSULE_MANPAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

# The modules loaded on demand (each folder adds its own to the DICAPSULE_MODULES property) go to
# lib/dicapsule/, where the tool looks for them relative to its own directory; not executable.
get_property(dicapsule_modules GLOBAL PROPERTY DICAPSULE_MODULES)
if(dicapsule_modules)
  install(TARGETS ${dicapsule_modules} LIBRARY DESTINATION lib/dicapsule
          PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endif()
