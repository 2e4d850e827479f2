# The tests in C++, with GoogleTest.
include(GoogleTest)
find_package(Eigen3 3.4 REQUIRED NO_MODULE)
set(is_linux_library OFF)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
  set(is_linux_library ON)
endif()
set(tests)

if(NOT QUOR_TESTS STREQUAL "SHIPPED")
  # From outside, through the library alone.
  add_executable(api_tests
    api/accuracy_test.cpp api/constructor_test.cpp api/cpp_wrapper_test.cpp api/solve_test.cpp
    api/sphere_test.cpp api/weld_test.cpp)
  target_link_libraries(api_tests PRIVATE quor::quor Eigen3::Eigen ${CMAKE_DL_LIBS})
  if(is_linux_library)
    # What they do to the process and to files is Linux's.
    target_sources(api_tests PRIVATE
      api/environment_test.cpp api/files_test.cpp api/other_eigen.cpp api/ranges_test.cpp)
    # Eigen's symbols of this program are there for a library to fall for.
    set_target_properties(api_tests PROPERTIES ENABLE_EXPORTS ON)
    set_source_files_properties(api/other_eigen.cpp PROPERTIES
      COMPILE_DEFINITIONS EIGEN_MAX_ALIGN_BYTES=64 SKIP_PRECOMPILE_HEADERS ON)
  endif()

  # Single modules.
  add_executable(module_tests
    modules/assembly_test.cpp modules/dense_front_test.cpp modules/disjoint_sets_test.cpp
    modules/edge_midpoints_test.cpp modules/factorization_test.cpp modules/fields_solve_test.cpp
    modules/intrinsic_delaunay_test.cpp
    $<$<BOOL:${is_linux_library}>:modules/number_text_test.cpp>
    modules/operator_test.cpp modules/ordering_test.cpp modules/oriented_box_test.cpp modules/progress_test.cpp
    modules/refined_count_test.cpp modules/substitution_test.cpp modules/weld_search_test.cpp modules/weld_steps_test.cpp
    modules/writer_test.cpp soups/soups.cpp soups/soups_slow_in_tables.cpp soups/soups_slow_in_tree.cpp)
  target_link_libraries(module_tests PRIVATE quorkit_objects quor_objects)

  # The kit, from outside, beside the library whose answers it gives.
  add_executable(kit_tests
    kit/check_test.cpp kit/clean_test.cpp kit/error_test.cpp kit/flow_test.cpp
    kit/refine_exact_test.cpp kit/refine_test.cpp kit/solver_test.cpp kit/thresholds_test.cpp
    kit/weld_origins_test.cpp kit/within_test.cpp kit/wrapper_test.cpp kit/write_test.cpp)
  target_link_libraries(kit_tests PRIVATE quor::quorkit quor::quor Eigen3::Eigen)
  list(APPEND tests api_tests module_tests kit_tests)

  # Against the plain weld on the part of the examples, and against a reader of mesh files.
  set(has_part_tests OFF)
  if(NOT CMAKE_CROSSCOMPILING)
    quor_find_files(nanoflann nanoflann.hpp)
    quor_find(has_part_tests "${QUOR_BUILD_TESTS}" "the tests on the part of the examples" "build test"
      assimp nanoflann)
  endif()
  if(has_part_tests)
    add_executable(part_tests
      api/factorization_part_test.cpp api/obj_reader_test.cpp api/weld_part_test.cpp
      soups/plain_weld.cpp soups/read_soup.cpp soups/soups.cpp soups/tagged_mesh.cpp)
    target_include_directories(part_tests PRIVATE ../src)
    target_link_libraries(part_tests PRIVATE quor::quor Eigen3::Eigen assimp::assimp)
    target_compile_definitions(part_tests PRIVATE
      QUOR_PART="${PROJECT_SOURCE_DIR}/examples/data/heat_sink.stl")
    list(APPEND tests part_tests)
  endif()
endif()

if(NOT QUOR_TESTS STREQUAL "CHECKED")
  # With an allocator that fails.
  add_executable(memory_tests memory/memory_test.cpp support/allocations.cpp)
  target_link_libraries(memory_tests PRIVATE quor::quor)
  add_executable(kit_memory_tests memory/kit_memory_test.cpp support/allocations.cpp)
  target_link_libraries(kit_memory_tests PRIVATE quor::quorkit)
  # How near estimates of errors come: long computations, too slow with sanitizers.
  add_executable(accuracy_tests kit/within_error_test.cpp)
  target_link_libraries(accuracy_tests PRIVATE quor::quorkit)
  list(APPEND tests memory_tests kit_memory_tests accuracy_tests)

  # What a host sees of the libraries: names, threads and stacks, unloading.
  if(is_linux_library)
    add_executable(host_tests api/library_test.cpp api/threads_test.cpp kit/host_test.cpp)
    target_link_libraries(host_tests PRIVATE quor::quorkit quor::quor ${CMAKE_DL_LIBS})
    target_compile_definitions(host_tests PRIVATE QUOR_LIBRARY="$<TARGET_FILE:quor>"
      QUORKIT_LIBRARY="$<TARGET_FILE:quorkit>"
      QUORKIT_EXPORTS="${PROJECT_SOURCE_DIR}/src/kit/quorkit.exports")
    list(APPEND tests host_tests)
  endif()
endif()

# Programs of their own; the second takes 3 GB of memory and is run by scripts/steps/check_overflow.
add_executable(fingerprint api/fingerprint.cpp)
target_link_libraries(fingerprint PRIVATE quor_objects)
add_test(NAME fingerprint COMMAND fingerprint)
add_executable(factor_overflow EXCLUDE_FROM_ALL api/factor_overflow.cpp)
target_link_libraries(factor_overflow PRIVATE quor::quor)

# What most tests include is compiled once.
file(CONFIGURE OUTPUT test_headers.cpp CONTENT "")
add_library(test_headers OBJECT "${CMAKE_CURRENT_BINARY_DIR}/test_headers.cpp")
target_precompile_headers(test_headers PRIVATE
  <gtest/gtest.h> <Eigen/Core> <Eigen/SparseCore> <cmath> <filesystem> <fstream> <functional>
  <random> <set> <sstream> <string> <vector>)
target_link_libraries(test_headers PRIVATE Eigen3::Eigen)
foreach(target test_headers ${tests} fingerprint factor_overflow)
  quor_test_options(${target})
  target_link_libraries(${target} PRIVATE $<IF:$<IN_LIST:${target},${tests}>,GTest::gtest_main,GTest::gtest>)
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  # As the modules are compiled, whose headers some tests include.
  target_compile_definitions(${target} PRIVATE
    $<TARGET_PROPERTY:quor_objects,INTERFACE_COMPILE_DEFINITIONS>)
  if(NOT target STREQUAL "test_headers")
    target_precompile_headers(${target} REUSE_FROM test_headers)
  endif()
endforeach()
if(WIN32)  # nothing is imported
  foreach(target IN ITEMS module_tests fingerprint)
    target_compile_definitions(${target} PRIVATE QUOR_BUILDING)
  endforeach()
endif()
foreach(target ${tests})
  if(CMAKE_CROSSCOMPILING)  # every start of an emulator takes a while
    add_test(NAME ${target} COMMAND ${target} --gtest_brief=1)
  else()
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60)
  endif()
endforeach()
