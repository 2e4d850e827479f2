# The page shows the program, as a block of this language, as it is built.
file(READ "${PAGE}" page)
file(READ "${PROGRAM}" program)
string(FIND "${page}" "```${LANGUAGE}\n${program}```" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${PAGE} does not show ${PROGRAM} as it is")
endif()
