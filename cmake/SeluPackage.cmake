# The packages that CPack makes: Debian packages of the components and one archive of all. scripts/package
# builds and tests them.
set(abi ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(selu_packages libseluutils${abi} libseluutils-dev selu) # of the components
set(selu_components libraries development application)
if(SELU_BUILD_PYTHON)
  list(APPEND selu_packages python3-seluutils)
  list(APPEND selu_components python3)
endif()

# What Debian wants to find beside the files of each package: its license and its list of changes.
set(docs ${PROJECT_BINARY_DIR}/package-docs)
selu_build_date(date time)
string(REGEX MATCH "^([A-Z][a-z][a-z]) ([ 0-9][0-9]) ([0-9]+)$" unused ${date})
string(STRIP ${CMAKE_MATCH_2} day)
set(month ${CMAKE_MATCH_1})
set(year ${CMAKE_MATCH_3})
execute_process(COMMAND date --utc -R -d "${day} ${month} ${year} ${time}"
  OUTPUT_VARIABLE debian_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(SELU_MAINTAINER "The SeluUtils developers <maintainers@seluutils.invalid>")
file(READ ${PROJECT_SOURCE_DIR}/LICENSE license)
string(REGEX REPLACE "\n\n" "\n.\n" license "${license}")
string(REGEX REPLACE "\n" "\n " license "${license}")
string(REGEX REPLACE " +$" "" license "${license}")
configure_file(${PROJECT_SOURCE_DIR}/packaging/copyright.in ${docs}/copyright @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${docs}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${docs}/changelog COPYONLY)
foreach(file IN ITEMS changelog.Debian changelog)
  execute_process(COMMAND gzip -9nkf ${docs}/${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(package component IN ZIP_LISTS selu_packages selu_components)
  install(FILES ${docs}/copyright ${docs}/changelog.Debian.gz ${docs}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

if(SELU_BUILD_PYTHON)
  set(folder lib/python3/dist-packages)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/seluutils DESTINATION ${folder} COMPONENT python3
    FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed")
  install(TARGETS _core LIBRARY DESTINATION ${folder}/seluutils COMPONENT python3)
  file(RELATIVE_PATH to_libraries /${folder}/seluutils /${CMAKE_INSTALL_LIBDIR})
  set_property(TARGET _core APPEND PROPERTY INSTALL_RPATH "$ORIGIN/${to_libraries}")
endif()

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME seluutils)
set(CPACK_PACKAGE_VENDOR "The SeluUtils developers")
set(CPACK_PACKAGE_CONTACT ${SELU_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_COMPONENTS_ALL ${selu_components})
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/SeluPackageOptions.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/SeluPackageFiles.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
foreach(library IN ITEMS SeluUtils SeluBase pxlib2image pxlib2core)
  get_target_property(folder ${library} BINARY_DIR)
  list(APPEND folders ${folder})
endforeach()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${folders})
set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME libseluutils${abi})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARIES_DESCRIPTION "walk, measure and mask 2D and 3D images (libraries)
SeluUtils walks the voxels of images, measures their texture by
co-occurrence matrices, masks volumes and draws random orientations.
This package has the shared libraries.")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libseluutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libseluutils${abi} (= ${version})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "walk, measure and mask 2D and 3D images (development)
SeluUtils walks the voxels of images, measures their texture by
co-occurrence matrices, masks volumes and draws random orientations.
This package has the headers, the static libraries, and the files for
CMake and pkg-config.")
set(CPACK_DEBIAN_APPLICATION_PACKAGE_NAME selu)
set(CPACK_DEBIAN_APPLICATION_PACKAGE_SECTION science)
set(CPACK_DEBIAN_APPLICATION_PACKAGE_DEPENDS "libseluutils${abi} (= ${version})")
set(CPACK_COMPONENT_APPLICATION_DESCRIPTION "texture, masks and walks of images on the command line
selu measures the texture of image files, draws samples of random
orientations, walks and paints voxels, masks volumes, and turns the
features of objects into tables.")
set(CPACK_DEBIAN_PYTHON3_PACKAGE_NAME python3-seluutils)
set(CPACK_DEBIAN_PYTHON3_PACKAGE_SECTION python)
set(CPACK_COMPONENT_PYTHON3_DESCRIPTION "texture, masks and walks of images in Python
SeluUtils walks the voxels of images, measures their texture by
co-occurrence matrices, masks volumes and draws random orientations.
This package has the module seluutils for NumPy arrays.")
set(CPACK_DEBIAN_PYTHON3_PACKAGE_CONTROL_EXTRA # what Python compiles goes with the package
  ${PROJECT_SOURCE_DIR}/packaging/python3/postinst ${PROJECT_SOURCE_DIR}/packaging/python3/prerm)
if(SELU_BUILD_PYTHON)
  math(EXPR next "${Python3_VERSION_MINOR} + 1")
  string(CONCAT CPACK_DEBIAN_PYTHON3_PACKAGE_DEPENDS "libseluutils${abi} (= ${version}), python3-numpy, "
    "python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next})")
endif()
include(CPack)
