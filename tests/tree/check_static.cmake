# The archive shows the exported names and no others: no template, nothing that a host could define too.
execute_process(COMMAND "${NM}" --extern-only --defined-only "${LIBRARY}"
  OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[0-9a-f]+ [A-Za-z] [^\n]+" symbols "${output}")
list(TRANSFORM symbols REPLACE "^[0-9a-f]+ " "")
file(STRINGS "${EXPORTS}" exports)
list(TRANSFORM exports PREPEND "T ")
list(SORT exports)
list(SORT symbols)
if(NOT symbols STREQUAL exports)
  message(FATAL_ERROR "${LIBRARY} shows\n${output}")
endif()
