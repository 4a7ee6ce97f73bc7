# What `cmake --install` places beside the programs, and the Debian package
# that CPack makes of it: the desktop entry, the set-up files' type and the
# MIDI files' association, the AppStream metainfo and the manual pages. The
# package's dependencies are computed from the programs' libraries
# (dpkg-shlibdeps), not typed.
set(desktop ${PROJECT_SOURCE_DIR}/resources/desktop)
install(FILES ${desktop}/org.nquillon.Velmora.desktop DESTINATION share/applications)
install(FILES ${desktop}/velmora-mime.xml DESTINATION share/mime/packages RENAME velmora.xml)
install(FILES ${desktop}/org.nquillon.Velmora.metainfo.xml DESTINATION share/metainfo)
# The manual pages, compressed as Debian's manual readers expect them.
foreach(page velmora velmora-render velmora-devices)
  set(source ${PROJECT_SOURCE_DIR}/resources/man/${page}.1)
  set(packed ${PROJECT_BINARY_DIR}/man/${page}.1.gz)
  add_custom_command(OUTPUT ${packed}
                     COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
                     COMMAND gzip -9 -n -c ${source} > ${packed}
                     DEPENDS ${source}
                     VERBATIM)
  list(APPEND VELMORA_MAN_PAGES ${packed})
endforeach()
add_custom_target(velmora_man_pages ALL DEPENDS ${VELMORA_MAN_PAGES})
install(FILES ${VELMORA_MAN_PAGES} DESTINATION share/man/man1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VENDOR NQuillon)
set(CPACK_PACKAGE_CONTACT "Velmora developers <velmora@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "MIDI note generator that composes with chance, joined to a sequencer")
set(CPACK_PACKAGE_INSTALL_DIRECTORY /usr)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# The General MIDI sounds are data, which no library check finds.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "timgm6mb-soundfont | fluid-soundfont-gm")
include(CPack)
