# How every target is built: language level, warnings, reproducible arithmetic,
# sanitizers, and for the libraries hidden symbols, an export header, version and SONAME.

include(GenerateExportHeader)

function(selu_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # Contracted multiply-adds would make results differ from compiler to compiler.
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -ffp-contract=off)
  if(SELU_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(SELU_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${SELU_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${SELU_SANITIZE})
  endif()
endfunction()

# selu_add_library(NAME SOURCES ... LINK ...): a library ORVA::NAME, shared or static as
# BUILD_SHARED_LIBS says, whose public headers stand in include/NAME of the directory given by INCLUDE (default: the current one).
function(selu_add_library name)
  cmake_parse_arguments(ARG "" "INCLUDE" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_INCLUDE)
    set(ARG_INCLUDE ${CMAKE_CURRENT_SOURCE_DIR}/include)
  endif()
  add_library(${name} ${ARG_SOURCES})
  add_library(ORVA::${name} ALIAS ${name})
  selu_configure_target(${name})
  set_target_properties(${name} PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN" # the libraries find each other wherever they are installed
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  string(TOUPPER ${name} upper)
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated)
  generate_export_header(${name} BASE_NAME ${upper}
    EXPORT_FILE_NAME ${generated}/${name}/Export.h)
  if(NOT BUILD_SHARED_LIBS)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON) # for a module that links it
    target_compile_definitions(${name} PUBLIC ${upper}_STATIC_DEFINE)
  endif()
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${ARG_INCLUDE}> $<BUILD_INTERFACE:${generated}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_LINK})

  install(TARGETS ${name} EXPORT SeluUtilsTargets)
  install(DIRECTORY ${ARG_INCLUDE}/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
  install(FILES ${generated}/${name}/Export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name})
endfunction()
