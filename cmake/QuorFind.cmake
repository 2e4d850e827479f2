# quor_find(<result> <mode> <what> <purpose> <package>...): whether <what> can be built, that is whether
# all packages are there. If not, mode ON stops; AUTO says in one line what is left out, and how
# to get it: <purpose> is one of scripts/steps/packages.txt.
# A package that the caller has looked for, with its components or as a file, is not looked for again.
function(quor_find result mode what purpose)
  set(missing)
  foreach(package IN LISTS ARGN)
    if(NOT DEFINED ${package}_FOUND)
      find_package(${package} QUIET)
    endif()
    if(NOT ${package}_FOUND)
      list(APPEND missing "${package}")
    endif()
  endforeach()
  if(missing)
    list(JOIN missing ", " missing)
    if(mode STREQUAL "AUTO")
      message(STATUS "quor: without ${what}: no ${missing} (scripts/setup ${purpose} installs that on Debian)")
    else()
      message(FATAL_ERROR "quor: ${what} cannot be built: no ${missing}. scripts/setup ${purpose} "
                          "installs that on Debian; or leave the choice to what is there (AUTO), or "
                          "set the option to OFF.")
    endif()
  endif()
  string(COMPARE EQUAL "${missing}" "" found)
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# quor_find_files(<package> <header> [<library>]): looks for a package that CMake has no package of. Sets
# <package>_FOUND, and the cache variables <package>_INCLUDE_DIR and <package>_LIBRARY.
function(quor_find_files package header)
  set(${package}_FOUND OFF PARENT_SCOPE)
  if(CMAKE_DISABLE_FIND_PACKAGE_${package})  # what find_package heeds
    return()
  endif()
  find_path(${package}_INCLUDE_DIR "${header}" PATH_SUFFIXES suitesparse)
  set(parts ${package}_INCLUDE_DIR)
  if(ARGN)
    find_library(${package}_LIBRARY "${ARGN}")
    list(APPEND parts ${package}_LIBRARY)
  endif()
  foreach(part IN LISTS parts)
    if(NOT ${part})
      return()
    endif()
  endforeach()
  set(${package}_FOUND ON PARENT_SCOPE)
endfunction()
