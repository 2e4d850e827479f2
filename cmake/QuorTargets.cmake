# What all targets of this project have in common.

# quor_options(<target>): language level, warnings, and the arithmetic: every operation is rounded on
# its own, so that the same input gives the same bits.
function(quor_options target)
  target_compile_features(${target} PRIVATE cxx_std_17 c_std_99)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /fp:precise /EHs)
  else()
    target_compile_options(${target} PRIVATE
      -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  endif()
  if(QUOR_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE $<IF:$<BOOL:${MSVC}>,/WX,-Werror>)
  endif()
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")  # part of the sanitizers' runtime is C++
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
endfunction()

option(QUOR_SANITIZE_TESTS "Let sanitizers watch the tests too, not only the libraries" ON)

# quor_test_options(<target>): the same for a program that tests, whose arithmetic is full of harmless
# small integers. Tests take longer to compile than to run.
function(quor_test_options target)
  quor_options(${target})
  target_compile_options(${target} PRIVATE -Wno-conversion -Wno-sign-conversion $<$<CONFIG:Release>:-O1>)
  if(NOT QUOR_SANITIZE_TESTS)
    target_compile_options(${target} PRIVATE -fno-sanitize=all)
    target_compile_definitions(${target} PRIVATE QUOR_SANITIZED)
  endif()
endfunction()
