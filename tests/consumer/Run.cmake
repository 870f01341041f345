# Installs the build in BUILD below WORK, builds the outside project against it, and runs it.
function(step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
step(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)
step(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR}
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS}
  -DCMAKE_PREFIX_PATH=${WORK}/installed)
step(${CMAKE_COMMAND} --build ${WORK}/build)
step(${WORK}/build/consumer)
if(EXISTS ${WORK}/installed/bin/selu)
  step(${WORK}/installed/bin/selu --version)
endif()
