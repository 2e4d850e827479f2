# The Debian packages: `cmake --build --preset package && cpack --preset package`.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development)
if(EXISTS "${PROJECT_SOURCE_DIR}/bindings/python/quor")
  list(APPEND CPACK_COMPONENTS_ALL python)
  install(DIRECTORY bindings/python/quor DESTINATION lib/python3/dist-packages
    COMPONENT python EXCLUDE_FROM_ALL FILES_MATCHING PATTERN "*.py" PATTERN __pycache__ EXCLUDE)
  install(FILES LICENSE DESTINATION share/doc/python3-quor RENAME copyright
    COMPONENT python EXCLUDE_FROM_ALL)
endif()
if(TARGET heatmap)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "The quor authors <authors@quor.invalid>")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian_documents.cmake")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(about "quor welds triangle soups exactly, solves for harmonic fields on meshes with a
factorization made once, and writes the result as a coloured OBJ.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libquor${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${about}

This package holds the shared library and the colour ramp.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libquor-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${about}

This package holds the headers, the CMake package and the pkg-config file.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-quor)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= 3.8), python3-numpy (>= 1:1.20), ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  "${PROJECT_SOURCE_DIR}/packaging/python3-quor/postinst;${PROJECT_SOURCE_DIR}/packaging/python3-quor/prerm")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "${about}

This package holds the module for Python.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME quor-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "${about}

This package holds the command heatmap and the page that shows its results in a browser.")
# The library of the other package is not installed where the packages are made.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/src" "${PROJECT_BINARY_DIR}/src/kit")
include(CPack)
