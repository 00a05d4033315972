# The window as an application of macOS, and a disk image of it: with PAGESTACK_BUNDLE, cpack -G DragNDrop.
# Not tried on a Mac yet. Included where the target is made, since its icon is a source file of it.

set(icon ${CMAKE_CURRENT_LIST_DIR}/pagestack.icns)
target_sources(pagestack PRIVATE ${icon})
set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
configure_file(${CMAKE_CURRENT_LIST_DIR}/Info.plist.in ${CMAKE_CURRENT_BINARY_DIR}/Info.plist @ONLY)
set_target_properties(pagestack PROPERTIES
  MACOSX_BUNDLE ON
  MACOSX_BUNDLE_INFO_PLIST ${CMAKE_CURRENT_BINARY_DIR}/Info.plist)
install(TARGETS pagestack
  BUNDLE DESTINATION . COMPONENT window
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT window)
# Qt, its plug-ins and the other libraries go into the application at its installation.
qt_generate_deploy_app_script(TARGET pagestack FILENAME_VARIABLE deploy NO_UNSUPPORTED_PLATFORM_ERROR)
install(SCRIPT ${deploy} COMPONENT window)
