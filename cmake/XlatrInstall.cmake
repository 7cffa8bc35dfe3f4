# What `cmake --install` gives to programs that use the library: headers, a CMake package and a pkg-config file. Both find
# the library relative to their own place, so that the tree can be moved. Programs are installed where they are built.
include(CMakePackageConfigHelpers)

set(XLATR_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/xlatr)

install(TARGETS xlatr EXPORT xlatrTargets LIBRARY)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/xlatr TYPE INCLUDE)
install(EXPORT xlatrTargets NAMESPACE xlatr:: DESTINATION ${XLATR_PACKAGE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/xlatrConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/xlatrConfig.cmake
  INSTALL_DESTINATION ${XLATR_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
# Before 1.0 a minor version may change what callers see.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/xlatrConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/xlatrConfig.cmake ${PROJECT_BINARY_DIR}/package/xlatrConfigVersion.cmake
  DESTINATION ${XLATR_PACKAGE_DIR})

file(RELATIVE_PATH XLATR_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" XLATR_PREFIX_FROM_PC "${XLATR_PREFIX_FROM_PC}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/xlatr.pc.in ${PROJECT_BINARY_DIR}/package/xlatr.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/xlatr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
