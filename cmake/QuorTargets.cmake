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
