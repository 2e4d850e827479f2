# quor_find(<result> <mode> <what> <purpose> <package>...): whether <what> can be built, that is whether
# all packages are there. If not, mode ON stops; AUTO says in one line what is left out, and how
# to get it: <purpose> is one of scripts/packages.txt.
function(quor_find result mode what purpose)
  set(missing)
  foreach(package IN LISTS ARGN)
    find_package(${package} QUIET)
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
