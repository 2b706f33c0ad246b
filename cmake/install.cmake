# Install rules: the headers (C and C++), both libraries with their soname
# links, the CMake package kvtl (targets kvtl::kvtl, kvtl::kvsl) and the
# pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The installed library finds the engine next to itself, wherever the
# prefix is moved to.
set_target_properties(kvtl PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS kvtl kvsl EXPORT kvtlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${CMAKE_SOURCE_DIR}/include/kvtl.h ${CMAKE_SOURCE_DIR}/include/kvsl.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The header-only C++ interface.
install(FILES ${CMAKE_SOURCE_DIR}/include/kvtl.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(KVTL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kvtl)
install(EXPORT kvtlTargets NAMESPACE kvtl:: DESTINATION ${KVTL_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kvtlConfig.cmake.in
  ${CMAKE_BINARY_DIR}/kvtlConfig.cmake INSTALL_DESTINATION ${KVTL_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/kvtlConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/kvtlConfig.cmake ${CMAKE_BINARY_DIR}/kvtlConfigVersion.cmake
  DESTINATION ${KVTL_CMAKE_DIR})

# The prefix is only known when installing (cmake --install --prefix), so
# the pkg-config file is written then, with absolute paths.
install(CODE "
  set(KVTL_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  set(KVTL_PC_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
  set(KVTL_PC_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
  foreach(dir KVTL_PC_LIBDIR KVTL_PC_INCLUDEDIR)
    if(NOT IS_ABSOLUTE \"\${\${dir}}\")
      set(\${dir} \"\${CMAKE_INSTALL_PREFIX}/\${\${dir}}\")
    endif()
  endforeach()
  set(KVTL_PC_VERSION \"${PROJECT_VERSION}\")
  configure_file(\"${CMAKE_CURRENT_LIST_DIR}/kvtl.pc.in\" \"${CMAKE_BINARY_DIR}/kvtl.pc\" @ONLY)
")
install(FILES ${CMAKE_BINARY_DIR}/kvtl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
