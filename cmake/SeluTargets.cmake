# How every target is built: language level, warnings, reproducible arithmetic and dates, hardening,
# sanitizers, and for the libraries hidden symbols, an export header, version and SONAME.

include(GenerateExportHeader)
include(CheckPIESupported)
include(SeluBuildDate)

check_pie_supported(LANGUAGES CXX)

# selu_harden(TARGET): what turns many an overrun into a stop. Addresses of functions are read-only once the
# program has started; executables lie anywhere in memory.
function(selu_harden target)
  target_compile_options(${target} PRIVATE
    -fstack-protector-strong -fstack-clash-protection -fcf-protection -Wformat -Werror=format-security
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()

# selu_count_lines(TARGET): it writes down which of its lines and branches have run.
function(selu_count_lines target)
  target_compile_options(${target} PRIVATE --coverage
    $<$<NOT:$<STREQUAL:${SELU_COVERAGE},LIBRARIES>>:-fprofile-update=prefer-atomic>) # whose tests have few threads
  target_link_options(${target} PRIVATE --coverage)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CoverageEnd.cpp)
    target_link_options(${target} PRIVATE -Wl,--wrap=_exit,--wrap=kill)
  endif()
endfunction()

function(selu_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # Contracted multiply-adds would make results differ from compiler to compiler.
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -ffp-contract=off)
  if(SELU_HARDEN)
    selu_harden(${target})
  endif()
  if(SELU_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  get_target_property(type ${target} TYPE)
  if(SELU_COVERAGE AND (NOT SELU_COVERAGE STREQUAL "LIBRARIES" OR type MATCHES "(STATIC|SHARED)_LIBRARY"))
    selu_count_lines(${target})
  endif()
  if(SELU_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${SELU_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${SELU_SANITIZE})
  endif()
endfunction()

# selu_add_library(NAME SOURCES ... LINK ...): a library ORVA::NAME, shared or static as
# BUILD_SHARED_LIBS says, whose public headers stand in include/NAME of the directory given by INCLUDE
# (default: the current one).
function(selu_add_library name)
  cmake_parse_arguments(ARG "" "INCLUDE" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_INCLUDE)
    set(ARG_INCLUDE ${CMAKE_CURRENT_SOURCE_DIR}/include)
  endif()
  add_library(${name} ${ARG_SOURCES})
  add_library(ORVA::${name} ALIAS ${name})
  selu_configure_target(${name})
  selu_pin_build_date(${name})
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
  elseif(NOT APPLE)
    selu_version_symbols(${name})
  endif()
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${ARG_INCLUDE}> $<BUILD_INTERFACE:${generated}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_LINK})

  install(TARGETS ${name} EXPORT SeluUtilsTargets
    LIBRARY COMPONENT libraries NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
  install(DIRECTORY ${ARG_INCLUDE}/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development FILES_MATCHING PATTERN "*.h")
  install(FILES ${generated}/${name}/Export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name}
    COMPONENT development)
  if(BUILD_SHARED_LIBS AND SELU_STATIC_TOO)
    selu_add_static_twin(${name} LINK ${ARG_LINK})
  endif()
endfunction()

# selu_add_static_twin(NAME LINK ...): a static library of the objects of the shared one, which others find
# under the same name.
function(selu_add_static_twin name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  set(twin ${name}_static)
  add_library(${twin} STATIC $<TARGET_OBJECTS:${name}>)
  set_target_properties(${twin} PROPERTIES OUTPUT_NAME ${name} EXPORT_NAME ${name} LINKER_LANGUAGE CXX)
  target_compile_features(${twin} PUBLIC cxx_std_20)
  target_include_directories(${twin} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  foreach(library IN LISTS ARG_LINK)
    string(REPLACE "ORVA::" "" library ${library})
    target_link_libraries(${twin} PUBLIC ${library}_static)
  endforeach()
  install(TARGETS ${twin} EXPORT SeluUtilsStaticTargets ARCHIVE COMPONENT development)
endfunction()

# selu_version_symbols(TARGET): what a shared library exports carries its version and is ours alone; what the
# compiler instantiates of the standard library stays inside.
function(selu_version_symbols target)
  set(script ${PROJECT_BINARY_DIR}/symbols.map)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/symbols.map.in ${script} @ONLY)
  target_link_options(${target} PRIVATE -Wl,--version-script=${script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
