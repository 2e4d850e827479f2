# The tests in C++, with GoogleTest.
include(GoogleTest)

# From outside, through the library alone.
find_package(Eigen3 3.4 REQUIRED NO_MODULE)
add_executable(api_tests
  api/accuracy_test.cpp api/constructor_test.cpp api/cpp_wrapper_test.cpp api/solve_test.cpp
  api/sphere_test.cpp api/weld_test.cpp)
target_link_libraries(api_tests PRIVATE
  quor::quor Eigen3::Eigen GTest::gtest_main ${CMAKE_DL_LIBS})
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
  # What they do to the process, to files and to the library is Linux's.
  target_sources(api_tests PRIVATE
    api/environment_test.cpp api/files_test.cpp api/library_test.cpp api/other_eigen.cpp
    api/ranges_test.cpp api/threads_test.cpp)
  target_compile_definitions(api_tests PRIVATE QUOR_LIBRARY="$<TARGET_FILE:quor>")
  # Eigen's symbols of this program are there for a library to fall for.
  set_target_properties(api_tests PROPERTIES ENABLE_EXPORTS ON)
  set_source_files_properties(api/other_eigen.cpp PROPERTIES
    COMPILE_DEFINITIONS EIGEN_MAX_ALIGN_BYTES=64)
endif()

# Single modules.
add_executable(module_tests
  modules/assembly_test.cpp modules/dense_front_test.cpp modules/disjoint_sets_test.cpp
  modules/edge_midpoints_test.cpp
  modules/factorization_test.cpp modules/fields_solve_test.cpp
  modules/operator_test.cpp modules/ordering_test.cpp modules/oriented_box_test.cpp
  modules/refined_count_test.cpp modules/substitution_test.cpp modules/weld_search_test.cpp modules/weld_steps_test.cpp
  modules/writer_test.cpp soups/soups.cpp soups/soups_slow_in_tables.cpp soups/soups_slow_in_tree.cpp)
target_link_libraries(module_tests PRIVATE quorkit_objects quor_objects GTest::gtest_main)

# The kit, from outside, beside the library whose answers it gives.
add_executable(kit_tests
  kit/check_test.cpp kit/clean_test.cpp kit/error_test.cpp kit/flow_test.cpp
  kit/refine_exact_test.cpp kit/refine_test.cpp
  kit/solver_test.cpp kit/thresholds_test.cpp kit/weld_origins_test.cpp kit/within_error_test.cpp
  kit/within_test.cpp kit/wrapper_test.cpp
  kit/write_test.cpp)
target_link_libraries(kit_tests PRIVATE
  quor::quorkit quor::quor Eigen3::Eigen GTest::gtest_main ${CMAKE_DL_LIBS})
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
  target_sources(kit_tests PRIVATE kit/host_test.cpp)
  target_compile_definitions(kit_tests PRIVATE QUORKIT_LIBRARY="$<TARGET_FILE:quorkit>"
    QUORKIT_EXPORTS="${PROJECT_SOURCE_DIR}/src/kit/quorkit.exports")
endif()

# With an allocator that fails.
add_executable(memory_tests memory/memory_test.cpp support/allocations.cpp)
target_link_libraries(memory_tests PRIVATE quor::quor GTest::gtest_main)
add_executable(kit_memory_tests memory/kit_memory_test.cpp support/allocations.cpp)
target_link_libraries(kit_memory_tests PRIVATE quor::quorkit GTest::gtest_main)

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
  target_link_libraries(part_tests PRIVATE
    quor::quor Eigen3::Eigen assimp::assimp GTest::gtest_main)
  target_compile_definitions(part_tests PRIVATE
    QUOR_PART="${PROJECT_SOURCE_DIR}/examples/data/heat_sink.stl")
  set(part_tests part_tests)
endif()

# Programs of their own; the second takes 3 GB of memory and is run by scripts/steps/check_overflow.
add_executable(fingerprint api/fingerprint.cpp)
target_link_libraries(fingerprint PRIVATE quor_objects GTest::gtest)
add_test(NAME fingerprint COMMAND fingerprint)
if(WIN32)  # nothing is imported
  target_compile_definitions(module_tests PRIVATE QUOR_BUILDING)
  target_compile_definitions(fingerprint PRIVATE QUOR_BUILDING)
endif()
add_executable(factor_overflow api/factor_overflow.cpp)
target_link_libraries(factor_overflow PRIVATE quor::quor)

set(tests api_tests kit_memory_tests kit_tests memory_tests module_tests ${part_tests})
foreach(target ${tests} fingerprint factor_overflow)
  quor_options(${target})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  # Test arithmetic is full of harmless small integers. Tests take longer to compile than to run.
  target_compile_options(${target} PRIVATE -Wno-conversion -Wno-sign-conversion $<$<CONFIG:Release>:-O1>)
endforeach()
foreach(target ${tests})
  if(CMAKE_CROSSCOMPILING)  # every start of an emulator takes a while
    add_test(NAME ${target} COMMAND ${target} --gtest_brief=1)
  else()
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60)
  endif()
endforeach()

