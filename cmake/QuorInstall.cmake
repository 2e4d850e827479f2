# What `cmake --install` copies, in two components: runtime (the library and what must go with it)
# and development (headers, CMake package, pkg-config file).
include(CMakePackageConfigHelpers)

set(ramp_directory "${CMAKE_INSTALL_DATADIR}/quor")
set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/quor")

install(TARGETS quor EXPORT quor
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  FILE_SET HEADERS COMPONENT development)
install(FILES assets/viridis.PNG DESTINATION "${ramp_directory}" COMPONENT runtime)

set(notices LICENSE licenses/NOTICE.md licenses/MPL-2.0.txt)
if(MINGW)
  list(APPEND notices licenses/mingw-w64.txt)
endif()
install(FILES ${notices} DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
install(FILES CHANGELOG.md docs/installing.md
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)

# The package needs no other one, so the exported targets are the whole of it.
install(EXPORT quor FILE quor-config.cmake NAMESPACE quor::
  DESTINATION "${package_directory}" COMPONENT development)
write_basic_package_version_file(quor-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quor-config-version.cmake"
  DESTINATION "${package_directory}" COMPONENT development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE prefix_from_here)
configure_file(cmake/quor.pc.in quor.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quor.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
