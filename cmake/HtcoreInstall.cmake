include(CMakePackageConfigHelpers)

install(TARGETS htcore EXPORT htcoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/htcore DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT htcoreTargets NAMESPACE htcore:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/htcore)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/htcoreConfig.cmake.in
  ${PROJECT_BINARY_DIR}/htcoreConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/htcore)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/htcoreConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/htcoreConfig.cmake ${PROJECT_BINARY_DIR}/htcoreConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/htcore)

if(HTCORE_SANITIZE)
  set(HTCORE_PC_EXTRA_LIBS "-fsanitize=${HTCORE_SANITIZE}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/htcore.pc.in ${PROJECT_BINARY_DIR}/htcore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/htcore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
