# Where an installation puts things, and the Debian package of it.
include(GNUInstallDirs)

set_target_properties(k7host PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
set_target_properties(k7effects PROPERTIES INSTALL_RPATH "$ORIGIN/..")

# A build lies as an installation does, and its programs find their libraries in the same way: the search path that
# CMake would put into them for the build ends with an empty entry, which is the working folder.
set_target_properties(k7 k7effects PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
set_target_properties(k7host PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})

set(docs ${CMAKE_INSTALL_DATAROOTDIR}/doc/k7)
install(TARGETS k7 RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS k7host LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
install(TARGETS k7effects LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/k7)
install(FILES docs/k7.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md CHANGELOG.md DESTINATION ${docs})
install(DIRECTORY docs examples DESTINATION ${docs} PATTERN k7.1 EXCLUDE)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME k7)
set(CPACK_PACKAGE_CONTACT "K7 maintainers <maintainers@k7.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Twelve image effects and a command-line compositor that renders them")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libgl1-mesa-dri) # draws the widgets of k7 preview
include(CPack)
