# What an outside project needs for find_package(SeluUtils CONFIG REQUIRED) and for pkg-config.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SeluUtils)
install(EXPORT SeluUtilsTargets NAMESPACE ORVA:: DESTINATION ${package_dir}
  COMPONENT development)
set(SELU_HAS_STATIC TRUE)
if(BUILD_SHARED_LIBS AND NOT SELU_STATIC_TOO)
  set(SELU_HAS_STATIC FALSE)
endif()
if(BUILD_SHARED_LIBS AND SELU_STATIC_TOO)
  install(EXPORT SeluUtilsStaticTargets NAMESPACE ORVA:: DESTINATION ${package_dir}
    COMPONENT development)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SeluUtilsConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/SeluUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/SeluUtilsConfig.cmake INSTALL_DESTINATION ${package_dir})
install(FILES ${PROJECT_BINARY_DIR}/SeluUtilsConfig.cmake
  ${PROJECT_BINARY_DIR}/SeluUtilsConfigVersion.cmake DESTINATION ${package_dir} COMPONENT development)

# The prefix as seen from the file's own place: the tree may be moved.
file(RELATIVE_PATH SELU_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" SELU_PC_PREFIX ${SELU_PC_PREFIX})
set(SELU_PC_DEFINES "")
if(NOT BUILD_SHARED_LIBS)
  foreach(library IN ITEMS SELUUTILS SELUBASE PXLIB2IMAGE PXLIB2CORE)
    string(APPEND SELU_PC_DEFINES " -D${library}_STATIC_DEFINE")
  endforeach()
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/SeluUtils.pc.in ${PROJECT_BINARY_DIR}/SeluUtils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/SeluUtils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
