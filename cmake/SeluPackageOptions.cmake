# Read by CPack once for each kind of package: the archive is one, the Debian packages are several.
if(CPACK_GENERATOR STREQUAL "TGZ")
  set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
  set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
  set(CPACK_PACKAGING_INSTALL_PREFIX "/")
  set(CPACK_PACKAGE_FILE_NAME seluutils-${CPACK_PACKAGE_VERSION})
endif()
