# Install rules: libraries, public headers, language files, a CMake package and a
# pkg-config file, so that find_package(tavi) and pkg-config both work.
include(CMakePackageConfigHelpers)

install(TARGETS tavi tavi_static EXPORT taviTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tavi DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(EXISTS ${PROJECT_SOURCE_DIR}/lang)
  install(DIRECTORY lang/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tavi/lang FILES_MATCHING PATTERN "*.lng")
endif()
install(EXPORT taviTargets NAMESPACE tavi:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavi)

configure_package_config_file(cmake/taviConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/taviConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavi)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/taviConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/taviConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/taviConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavi)

configure_file(cmake/tavi.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tavi.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
