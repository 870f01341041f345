# What an outside project needs for find_package(SeluUtils CONFIG REQUIRED).
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SeluUtils)
install(EXPORT SeluUtilsTargets NAMESPACE ORVA:: DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SeluUtilsConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/SeluUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/SeluUtilsConfig.cmake INSTALL_DESTINATION ${package_dir})
install(FILES ${PROJECT_BINARY_DIR}/SeluUtilsConfig.cmake
  ${PROJECT_BINARY_DIR}/SeluUtilsConfigVersion.cmake DESTINATION ${package_dir})
