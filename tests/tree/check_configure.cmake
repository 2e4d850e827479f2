# Configures as on a machine with a compiler, CMake and Eigen only: what has its packages is built, the
# rest is left out and named; what was asked for stops instead.
file(REMOVE_RECURSE "${WORK}")
foreach(package assimp CHOLMOD CLI11 GTest nanoflann nlohmann_json VTK)
  list(APPEND without "-DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON")
endforeach()

function(configure)
  execute_process(COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}" ${without} ${ARGN}
    OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE result)
  string(REGEX REPLACE "[ \n]+" " " said "${output}${error}")  # CMake wraps errors
  set(said "${said}" PARENT_SCOPE)
  set(result "${result}" PARENT_SCOPE)
endfunction()

function(says words)
  string(FIND "${said}" "${words}" position)
  if(position EQUAL -1)
    message(SEND_ERROR "CMake does not say \"${words}\":\n${said}")
  endif()
endfunction()

configure(-DQUOR_BUILD_BENCHMARKS=AUTO)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "a plain cmake stops:\n${said}")
endif()
says("without the command heatmap: no CLI11, nanoflann, nlohmann_json (scripts/setup build")
says("without the tests in C++: no GTest (scripts/setup test")
says("the benchmarks of weld, construct, solve and write: no assimp, CLI11, nanoflann, VTK, CHOLMOD")

foreach(asked "QUOR_BUILD_TOOLS|the command heatmap" "QUOR_BUILD_TESTS|the tests in C++"
    "QUOR_BUILD_BENCHMARKS|the benchmark of refine")
  string(REPLACE "|" ";" asked "${asked}")
  list(POP_FRONT asked option what)
  configure("-D${option}=ON")
  if(result EQUAL 0)
    message(SEND_ERROR "${option}=ON does not stop without its packages")
  endif()
  says("${what} cannot be built")
  configure("-D${option}=AUTO")
endforeach()

# With GoogleTest and assimp there, but not the one header that some tests need besides.
list(REMOVE_ITEM without -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_assimp=ON)
file(REMOVE_RECURSE "${WORK}")
configure()
if(NOT said MATCHES "without the tests in C|on the part of the examples: no (assimp, )?nanoflann")
  message(SEND_ERROR "CMake does not say that a header is missing:\n${said}")
endif()
