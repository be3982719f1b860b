# What `cmake --install` puts where, and the Debian package that `cpack` makes of it. The programs
# find their modules and data beside themselves, so all of them lie in one folder, with links to
# those that a user starts.
include(GNUInstallDirs)
set(home ${CMAKE_INSTALL_LIBDIR}/sondrava)
set(app org.sondrava.Sondrava)
set(bin ${CMAKE_BINARY_DIR}/bin)

install(TARGETS sondrava sondrava-render sondrava-plugins RUNTIME DESTINATION ${home})
install(TARGETS aam libaccess libaccess-status LIBRARY DESTINATION ${home})
install(FILES ${bin}/default.qvl DESTINATION ${home})
install(DIRECTORY ${bin}/sounds ${bin}/presets ${bin}/clips DESTINATION ${home})
file(RELATIVE_PATH way /${CMAKE_INSTALL_BINDIR} /${home})
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links)
foreach(name sondrava sondrava-render)
    file(CREATE_LINK ${way}/${name} ${CMAKE_BINARY_DIR}/links/${name} SYMBOLIC)
    install(FILES ${CMAKE_BINARY_DIR}/links/${name} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

set(desktop ${CMAKE_SOURCE_DIR}/data/desktop)
install(FILES ${desktop}/${app}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${desktop}/${app}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${desktop}/${app}.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${desktop}/${app}.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${desktop}/${app}.svg RENAME application-x-sondrava-project.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/mimetypes)
install(FILES ${CMAKE_SOURCE_DIR}/data/man/sondrava.1 ${CMAKE_SOURCE_DIR}/data/man/sondrava-render.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${desktop}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/sondrava)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sondrava)
set(CPACK_PACKAGE_VENDOR Sondrava)
set(CPACK_PACKAGE_CONTACT "The Sondrava developers <sondrava@localhost>" CACHE STRING
    "Who answers for the package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Digital audio workstation around one graph of components")
set(CPACK_PACKAGE_DESCRIPTION "Records, imports, arranges, edits, mixes and exports music. Everything that
makes a sound is a node of one graph that can be seen and rewired. Plays through JACK, PipeWire,
PulseAudio or ALSA, and hosts plug-ins.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is loaded or started by name, so that nothing above tells of it.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libcurl4, libxft2, libfontconfig1, libxrender1, fonts-dejavu-core | fonts-freefont-ttf")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "lame, libfribidi0, rtkit, xdg-utils")
include(CPack)
