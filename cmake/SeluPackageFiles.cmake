# Run by CPack before it packs the files that it has installed.
if(CPACK_GENERATOR STREQUAL "DEB")
  # A Debian system finds its libraries without being told where; the archive, which may lie anywhere, does not.
  file(GLOB_RECURSE files LIST_DIRECTORIES false
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/* ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/*.so*)
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK ${file})
      file(RPATH_REMOVE FILE ${file})
    endif()
  endforeach()
endif()
