# The page shows the program as it is built, and what it prints.
include("${CMAKE_CURRENT_LIST_DIR}/check_program.cmake")
execute_process(COMMAND "${EXECUTABLE}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "([^\n]+)" "    \\1" printed "${printed}")
string(FIND "${page}" "\n\n${printed}\n" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${PAGE} does not show what the program prints:\n${printed}")
endif()
