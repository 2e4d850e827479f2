# quor_library(<name> OBJECTS <object library> [MORE <object file>...] EXPORTS <file> HEADERS <file>...):
# a library, shared or static as BUILD_SHARED_LIBS says, with the alias quor::<name>, that shows the
# names listed in the file, one per line, and no others. Hidden visibility alone still leaks instantiated
# standard-library templates; unique ones among them would keep a shared library from being unloaded.
function(quor_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OBJECTS;EXPORTS" "HEADERS;MORE")
  file(STRINGS "${arg_EXPORTS}" exports)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${arg_EXPORTS}")
  set_target_properties(${arg_OBJECTS} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${arg_OBJECTS} PRIVATE -fno-gnu-unique)
  endif()
  if(BUILD_SHARED_LIBS)
    quor_shared_library(${name} ${arg_OBJECTS} "${exports}")
    target_sources(${name} PRIVATE ${arg_MORE})
  else()
    quor_static_library(${name} ${arg_OBJECTS} "${arg_EXPORTS}" ${arg_MORE})
  endif()
  add_library(quor::${name} ALIAS ${name})
  target_sources(${name} PUBLIC FILE_SET HEADERS
    BASE_DIRS "${PROJECT_SOURCE_DIR}/include" FILES ${arg_HEADERS})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  set_property(GLOBAL APPEND PROPERTY quor_libraries ${name})
endfunction()

function(quor_shared_library name objects exports)
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:${objects}>)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  set(list "${CMAKE_CURRENT_BINARY_DIR}/${name}.exports")
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "")  # the name that hosts ask for
    enable_language(RC)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${name}.rc" @ONLY)
    target_sources(${name} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${name}.rc")
    if(MINGW)  # no time in the file: same sources, same bytes
      target_link_options(${name} PRIVATE LINKER:--no-insert-timestamp)
    endif()
    if(MINGW AND QUOR_STATIC_RUNTIME)
      target_link_options(${name} PRIVATE -static)
    endif()
    return()
  elseif(APPLE)
    list(TRANSFORM exports PREPEND "_")  # as C names stand in its objects
    list(JOIN exports "\n" lines)
    file(CONFIGURE OUTPUT "${list}" CONTENT "${lines}\n" @ONLY)
    target_link_options(${name} PRIVATE "LINKER:-exported_symbols_list,${list}")
  else()
    list(JOIN exports ";\n    " lines)
    file(CONFIGURE OUTPUT "${list}" CONTENT "{\n  global:\n    ${lines};\n  local:\n    *;\n};\n" @ONLY)
    target_link_options(${name} PRIVATE "LINKER:--version-script=${list}")
  endif()
  set_target_properties(${name} PROPERTIES LINK_DEPENDS "${list}")
endfunction()

# Where the linker and objcopy are those of GNU, all objects become one in which only the exported
# names are global: nothing in the archive can collide with a host's own symbols, or replace them.
# Groups are resolved first, or the linker could drop a template that the host has as well and with it
# what our local symbol stands for. Elsewhere hidden visibility is all that hides.
function(quor_static_library name objects exports)
  if(UNIX AND NOT APPLE AND CMAKE_OBJCOPY)
    set(object "${CMAKE_CURRENT_BINARY_DIR}/${name}.o")
    # Through the compiler, which knows the linker's target.
    add_custom_command(OUTPUT "${object}"
      COMMAND "${CMAKE_CXX_COMPILER}" -r -nostdlib -Wl,--force-group-allocation -o "${object}"
              "$<TARGET_OBJECTS:${objects}>" ${ARGN}
      COMMAND "${CMAKE_OBJCOPY}" "--keep-global-symbols=${exports}" "${object}"
      DEPENDS ${objects} "$<TARGET_OBJECTS:${objects}>" ${ARGN} "${exports}"
      COMMAND_EXPAND_LISTS VERBATIM)
    set_source_files_properties("${object}" PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    add_library(${name} STATIC "${object}")
  else()
    add_library(${name} STATIC $<TARGET_OBJECTS:${objects}> ${ARGN})
  endif()
  # What the C++ compiler links and the C compiler does not, for programs in C.
  set(runtime ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(REMOVE_ITEM runtime ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
  list(REMOVE_DUPLICATES runtime)
  target_link_libraries(${name} INTERFACE ${runtime})
  # On Windows names of a DLL are imported unless the header knows that there is none.
  target_compile_definitions(${name} INTERFACE QUOR_STATIC)
  target_compile_definitions(${objects} PUBLIC QUOR_STATIC)
endfunction()
