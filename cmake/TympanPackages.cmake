# What `cmake --install` lays down beside the headers: library, command, package files.

include(CMakePackageConfigHelpers)

install(TARGETS tympan EXPORT tympan-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT library
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

set(tympan_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tympan")
install(EXPORT tympan-targets NAMESPACE tympan:: DESTINATION "${tympan_cmake_dir}"
    COMPONENT development)
configure_package_config_file(cmake/tympan-config.cmake.in
    "${PROJECT_BINARY_DIR}/tympan-config.cmake" INSTALL_DESTINATION "${tympan_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tympan-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tympan-config.cmake"
    "${PROJECT_BINARY_DIR}/tympan-config-version.cmake"
    DESTINATION "${tympan_cmake_dir}" COMPONENT development)

# The prefix in tympan.pc is told from the place of the file itself, so that a tree can be moved.
file(RELATIVE_PATH tympan_prefix_from_pc
    "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/tympan.pc.in "${PROJECT_BINARY_DIR}/tympan.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tympan.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libtympan" RENAME copyright
    COMPONENT library)
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libtympan-dev" RENAME copyright
    COMPONENT development)

if(TYMPAN_BUILD_TOOLS)
    install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/tympan" RENAME copyright
        COMPONENT command)
    install(TARGETS tympan_cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT command)
endif()

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_CONTACT "The tympan authors <tympan@example.org>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development command)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "libtympan${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "libtympan-dev")
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME "tympan")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS}")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "libgs-common") # a CMYK profile for imports
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION "libs")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION "graphics")
include(CPack)
