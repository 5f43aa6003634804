# Where an installation puts things, and the Debian packages of it: the program's, the window's, and the OpenFX bundle's.
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME k7)

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

if(TARGET k7view)
  set_target_properties(k7view PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  set(share ${CMAKE_INSTALL_DATAROOTDIR})
  install(TARGETS k7view RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT view)
  install(FILES view/k7view.desktop DESTINATION ${share}/applications COMPONENT view)
  install(FILES view/k7view.svg DESTINATION ${share}/icons/hicolor/scalable/apps COMPONENT view)
  install(DIRECTORY docs/pictures/ DESTINATION ${share}/k7/pictures COMPONENT view
    FILES_MATCHING PATTERN "*-after.jpg" PATTERN "before-after.jpg" EXCLUDE)
endif()

# OpenFX hosts look here, whatever the prefix of the package is.
set(bundle OFX/Plugins/K7.ofx.bundle/Contents)
install(TARGETS k7ofx LIBRARY DESTINATION ${bundle}/Linux-x86-64 COMPONENT openfx)
install(DIRECTORY ${PROJECT_BINARY_DIR}/K7.ofx.bundle/Contents/Resources DESTINATION ${bundle} COMPONENT openfx)
install(FILES docs/openfx.md DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/k7-openfx COMPONENT openfx)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL k7 openfx)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGE_NAME k7)
set(CPACK_PACKAGE_CONTACT "K7 maintainers <maintainers@k7.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Twelve image effects")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_K7_PACKAGE_NAME k7)
set(CPACK_DEBIAN_K7_PACKAGE_RECOMMENDS libgl1-mesa-dri) # draws the widgets of k7 preview
set(CPACK_COMPONENT_K7_DESCRIPTION "A command-line compositor that renders them.")
set(CPACK_DEBIAN_OPENFX_PACKAGE_NAME k7-openfx)
set(CPACK_COMPONENT_OPENFX_DESCRIPTION "For compositors that take OpenFX plug-ins.")
if(TARGET k7view)
  list(APPEND CPACK_COMPONENTS_ALL view)
  set(CPACK_DEBIAN_VIEW_PACKAGE_NAME k7-view)
  set(CPACK_DEBIAN_VIEW_PACKAGE_DEPENDS "k7 (= ${PROJECT_VERSION})") # its libraries, and k7 itself, which renders files
  set(CPACK_DEBIAN_VIEW_PACKAGE_RECOMMENDS libgl1-mesa-dri)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
  set(CPACK_COMPONENT_VIEW_DESCRIPTION "A window to see and set them in.")
endif()
include(CPack)
