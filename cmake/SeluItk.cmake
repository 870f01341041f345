# selu_find_itk(MODULE...): finds these modules of ITK, quietly. ITK's package file asks for HDF5,
# whose find module needs a C compiler; GDCM's complains about programs that are not installed.
macro(selu_find_itk)
  enable_language(C)
  set(CMAKE_MESSAGE_LOG_LEVEL WARNING)
  find_package(ITK REQUIRED COMPONENTS ${ARGN})
  unset(CMAKE_MESSAGE_LOG_LEVEL)
endmacro()

# selu_use_itk(TARGET): what a target whose sources include ITK needs; with Clang, a word in advance
# for Debian's ITK, which was built with GCC.
function(selu_use_itk target)
  target_include_directories(${target} SYSTEM PRIVATE ${ITK_INCLUDE_DIRS})
  target_link_libraries(${target} PRIVATE ${ITK_LIBRARIES})
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -include ${PROJECT_SOURCE_DIR}/cmake/ItkWithClang.h)
  endif()
endfunction()
