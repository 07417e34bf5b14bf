# cmake --install: the host, the library, the shell and the public headers,
# with a package configuration, so that an interpreter's own build finds them
# with find_package(kovo) and links kovo::kovovmmt (and, to call the library's
# functions directly, kovo::kovovmf).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(WIN32)
  # DLLs and the shell side by side, as the shell loads the library from
  # beside itself, with the shared run-time DLLs they all use.
  install(FILES ${KOVO_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY include/win32/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
else()
  # The installed shell and library find theirs in the library folder.
  set_target_properties(kovo kovovmf PROPERTIES INSTALL_RPATH
                                                "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
install(TARGETS kovovmmt kovovmf kovo EXPORT kovoTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/kovo DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(KOVO_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kovo)
install(EXPORT kovoTargets NAMESPACE kovo:: DESTINATION ${KOVO_CONFIG_DIR})
configure_package_config_file(cmake/kovoConfig.cmake.in
                              ${CMAKE_BINARY_DIR}/kovoConfig.cmake
                              INSTALL_DESTINATION ${KOVO_CONFIG_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/kovoConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/kovoConfig.cmake ${CMAKE_BINARY_DIR}/kovoConfigVersion.cmake
        DESTINATION ${KOVO_CONFIG_DIR})
