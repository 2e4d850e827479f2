# What `cmake --install` copies, in three components: runtime (the library and what must go with it),
# development (headers, CMake package, pkg-config file), and tools (heatmap and the page that shows what
# it computed) where heatmap is built.
include(CMakePackageConfigHelpers)

set(ramp_directory "${CMAKE_INSTALL_DATADIR}/quor")
set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/quor")

get_property(libraries GLOBAL PROPERTY quor_libraries)
install(TARGETS ${libraries} quor_cpp quorkit_cpp EXPORT quor
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  FILE_SET HEADERS COMPONENT development)
install(FILES assets/viridis.PNG DESTINATION "${ramp_directory}" COMPONENT runtime)
set(viewer_component development)
if(TARGET heatmap)
  set(viewer_component tools)
  # The program finds the library beside it, unless the library is where the system looks anyway.
  if(APPLE)
    set_target_properties(heatmap PROPERTIES INSTALL_RPATH "@loader_path/../${CMAKE_INSTALL_LIBDIR}")
  elseif(UNIX AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_target_properties(heatmap PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  endif()
  install(TARGETS heatmap RUNTIME COMPONENT tools)
  install(FILES licenses/heatmap.txt DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT tools)
endif()
install(FILES assets/viewer.html DESTINATION "${ramp_directory}" COMPONENT ${viewer_component})
# The binding that is compiled in, and programs to begin with; a copy of the library alone has neither.
if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/bindings/csharp")
  install(DIRECTORY bindings/csharp/ DESTINATION "${ramp_directory}/csharp" COMPONENT development
    FILES_MATCHING PATTERN "*.cs" PATTERN tests EXCLUDE)
endif()
foreach(file examples/part/part.c examples/part/part.cpp examples/part/Part.cs
    examples/plate/plate.c examples/plate/plate.cpp examples/plate/Plate.cs)
  if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    install(FILES ${file} DESTINATION "${ramp_directory}/examples" COMPONENT development)
  endif()
endforeach()

set(notices LICENSE licenses/NOTICE.md licenses/MPL-2.0.txt)
if(MINGW)
  list(APPEND notices licenses/mingw-w64.txt)
endif()
install(FILES ${notices} DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
install(FILES CHANGELOG.md docs/installing.md
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)

# The exported targets, which need no other package, and the path of the ramp. Before 1.0 a minor
# version may change the C++ wrapper: see docs/installing.md.
install(EXPORT quor FILE quor-targets.cmake NAMESPACE quor::
  DESTINATION "${package_directory}" COMPONENT development)
configure_package_config_file(packaging/quor-config.cmake.in quor-config.cmake
  INSTALL_DESTINATION "${package_directory}" PATH_VARS ramp_directory
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(quor-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quor-config.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/quor-config-version.cmake"
  DESTINATION "${package_directory}" COMPONENT development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE prefix_from_here)
foreach(library IN LISTS libraries)
  set(pc_libs "-L\${libdir} -l${library}")
  set(pc_cflags "-I\${includedir}")
  if(NOT BUILD_SHARED_LIBS)  # whoever links the archive brings the C++ runtime
    get_target_property(runtime ${library} INTERFACE_LINK_LIBRARIES)
    list(TRANSFORM runtime PREPEND " -l")
    string(APPEND pc_libs ${runtime})
    string(APPEND pc_cflags " -DQUOR_STATIC")
  endif()
  configure_file(packaging/quor.pc.in ${library}.pc @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${library}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endforeach()
