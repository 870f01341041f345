# The date in the location record of an error, such as "Nov 22 2026-00:00:00": that of the release, so that
# two builds of the same sources are the same bytes. SOURCE_DATE_EPOCH, where the configuration finds it in
# its environment, gives another; SELU_BUILD_DATE=compiler lets each source carry the time of its compilation.
set(SELU_RELEASE_DATE "2026-11-22")
set(SELU_BUILD_DATE "" CACHE STRING
  "Date in the records of errors: YYYY-MM-DD, compiler, or empty (SOURCE_DATE_EPOCH, else the release's)")

# selu_build_date(DATE TIME): as the compiler writes them, the day padded with a blank.
function(selu_build_date date time)
  set(months Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
  set(text ${SELU_RELEASE_DATE}T00:00:00)
  if(SELU_BUILD_DATE AND NOT SELU_BUILD_DATE STREQUAL "compiler")
    set(text ${SELU_BUILD_DATE}T00:00:00)
  elseif(DEFINED ENV{SOURCE_DATE_EPOCH})
    string(TIMESTAMP text "%Y-%m-%dT%H:%M:%S" UTC) # CMake takes that time for now
  endif()
  if(NOT text MATCHES "^([0-9][0-9][0-9][0-9])-(0[1-9]|1[0-2])-([0-3])([0-9])T([0-9:]+)$")
    message(FATAL_ERROR "SELU_BUILD_DATE is ${SELU_BUILD_DATE}, which is neither YYYY-MM-DD nor compiler")
  endif()
  set(year ${CMAKE_MATCH_1})
  set(month ${CMAKE_MATCH_2})
  string(REPLACE "0" " " tens ${CMAKE_MATCH_3})
  set(day "${tens}${CMAKE_MATCH_4}")
  set(${time} ${CMAKE_MATCH_5} PARENT_SCOPE)
  math(EXPR index "${month} - 1")
  list(GET months ${index} name)
  set(${date} "${name} ${day} ${year}" PARENT_SCOPE)
endfunction()

# selu_pin_build_date(TARGET): the macros that the records are made of.
function(selu_pin_build_date target)
  if(SELU_BUILD_DATE STREQUAL "compiler")
    return()
  endif()
  selu_build_date(date time)
  target_compile_definitions(${target} PRIVATE "__DATE__=\"${date}\"" "__TIME__=\"${time}\"")
  target_compile_options(${target} PRIVATE -Wno-builtin-macro-redefined)
endfunction()
