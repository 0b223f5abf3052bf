# What `cmake --install` lays down beside the headers (library, command, package files, documents), and
# how `cpack` divides it into Debian packages: a component is a package.

include(CMakePackageConfigHelpers)

install(TARGETS tympan EXPORT tympan-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT library
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

set(tympan_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tympan")
install(EXPORT tympan-targets NAMESPACE tympan:: DESTINATION "${tympan_cmake_dir}"
    COMPONENT development)
configure_package_config_file(cmake/tympan-config.cmake.in
    "${PROJECT_BINARY_DIR}/tympan-config.cmake" INSTALL_DESTINATION "${tympan_cmake_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tympan-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tympan-config.cmake"
    "${PROJECT_BINARY_DIR}/tympan-config-version.cmake"
    DESTINATION "${tympan_cmake_dir}" COMPONENT development)

# The prefix in tympan.pc is told from the place of the file itself, so that a tree can be moved.
file(RELATIVE_PATH tympan_prefix_from_pc
    "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" tympan_prefix_from_pc "${tympan_prefix_from_pc}")
configure_file(cmake/tympan.pc.in "${PROJECT_BINARY_DIR}/tympan.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tympan.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

get_target_property(tympan_soversion tympan SOVERSION)
set(tympan_library_package "libtympan${tympan_soversion}")
set(tympan_development_package "libtympan-dev")
set(tympan_command_package "tympan")

# tympan_documents(COMPONENT): what every package has in its folder of documents.
function(tympan_documents component)
    set(folder "${CMAKE_INSTALL_DATADIR}/doc/${tympan_${component}_package}")
    install(FILES LICENSE DESTINATION "${folder}" RENAME copyright COMPONENT ${component})
    install(FILES CHANGELOG.md DESTINATION "${folder}" COMPONENT ${component})
endfunction()

set(CPACK_COMPONENTS_ALL library development)
tympan_documents(library)
tympan_documents(development)
install(DIRECTORY examples
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${tympan_development_package}" COMPONENT development)

if(TYMPAN_BUILD_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL command)
    tympan_documents(command)
    install(TARGETS tympan_cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT command)
    # The README with the guides that it leads to.
    set(tympan_guides_dir "${CMAKE_INSTALL_DATADIR}/doc/${tympan_command_package}")
    file(GLOB tympan_guides CONFIGURE_DEPENDS "docs/*.md")
    install(FILES README.md DESTINATION "${tympan_guides_dir}" COMPONENT command)
    install(FILES ${tympan_guides} DESTINATION "${tympan_guides_dir}/docs" COMPONENT command)
    # What makes desktops know the files and show them small.
    install(FILES packaging/desktop/tympan.xml
        DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages" COMPONENT command)
    install(FILES packaging/desktop/tympan.thumbnailer
        DESTINATION "${CMAKE_INSTALL_DATADIR}/thumbnailers" COMPONENT command)
endif()

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_CONTACT "The tympan authors <tympan@example.org>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE tympan)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package's own stands at the head of its description
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=") # patch releases keep to the soname's interface
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${tympan_library_package}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION "libs")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${PROJECT_DESCRIPTION} (library)
The shared library that programs are linked with: it reads and writes
continuous-tone (CT) and line-work (LW) files and indexed JPEG files, and
reads TIFF, TIFF/IT and page files.")

set(tympan_same_library "${tympan_library_package} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "${tympan_development_package}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${tympan_same_library}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development)
What programs are compiled with: headers, the files by which CMake and
pkg-config find the library, and examples.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME "${tympan_command_package}")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION "graphics")
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${tympan_same_library}")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "libgs-common") # a CMYK profile for imports
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "${PROJECT_DESCRIPTION} (command)
The command tympan tells what a prepress picture file is, checks it, shows it,
takes rows and runs out of it, and makes such files of ordinary pictures.")

include(CPack)
