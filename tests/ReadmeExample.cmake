# The example in the README is the one that is built and run, letter for letter.
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "${example}" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${README} does not hold the text of ${EXAMPLE}")
endif()
