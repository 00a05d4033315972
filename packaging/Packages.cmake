# Packages for Debian, one for each program, and an archive of both: cpack -G DEB, cpack -G TGZ.
# With SOURCE_DATE_EPOCH set, two builds give the same bytes. Disk images for macOS: see macos/Bundle.cmake.

set(CPACK_PACKAGE_NAME pagestack)
set(CPACK_PACKAGE_VENDOR "The Pagestack authors")
set(CPACK_PACKAGE_CONTACT "The Pagestack authors <pagestack@corvanta.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "turns TIFF files, multi-page ones included, into images")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL cli)
if(TARGET pagestack)
  list(APPEND CPACK_COMPONENTS_ALL window)
endif()
if(PAGESTACK_BUNDLE)
  set(CPACK_COMPONENTS_ALL window)
  set(CPACK_DMG_VOLUME_NAME Pagestack)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CLI_PACKAGE_NAME pagestack-cli)
set(CPACK_COMPONENT_CLI_DESCRIPTION
"Writes every page of TIFF files as JPEG, PNG, TIFF, BMP or GIF under a
predictable name, and a log of what it read and wrote. Nothing is lost or
altered without a word. This is the command line, made for servers and
scripts; it needs no display.")

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME pagestack)
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "qt6-qpa-plugins, qt6-wayland, qt6-translations-l10n")
set(CPACK_DEBIAN_WINDOW_PACKAGE_SUGGESTS "pagestack-cli")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION
"People fill a list with TIFF files, multi-page ones included, tick them,
choose options and press Convert: every page comes out as JPEG, PNG, TIFF,
BMP or GIF under a predictable name. Nothing is lost or altered without a
word, and each run leaves a log.")

include(CPack)
