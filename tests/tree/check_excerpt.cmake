# The page shows lines of the program, as a block of C, as they are built.
file(READ "${PAGE}" page)
file(READ "${PROGRAM}" program)
string(REGEX MATCH "```c\n([^`]+)```" block "${page}")
string(FIND "${program}" "${CMAKE_MATCH_1}" position)
if(block STREQUAL "" OR position EQUAL -1)
  message(FATAL_ERROR "${PAGE} does not show lines of ${PROGRAM} as they are")
endif()
