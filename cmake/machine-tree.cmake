# Shared by the toolchain files of Linux on other machines: their libraries and headers stand in a tree
# of their own under build/machines, which scripts/other-machines fills from Debian's packages.
# The file that includes this has set CMAKE_SYSTEM_PROCESSOR and
#   TYMPAN_MACHINE     Debian's name of the machine
#   TYMPAN_MULTIARCH   the folder of its libraries, below usr/lib

set(CMAKE_SYSTEM_NAME Linux)
get_filename_component(TYMPAN_MACHINE_TREE
    "${CMAKE_CURRENT_LIST_DIR}/../build/machines/${TYMPAN_MACHINE}" ABSOLUTE)
if(NOT EXISTS "${TYMPAN_MACHINE_TREE}/usr/lib/${TYMPAN_MULTIARCH}")
    message(FATAL_ERROR "scripts/other-machines makes ${TYMPAN_MACHINE_TREE} and then builds")
endif()

set(CMAKE_SYSROOT "${TYMPAN_MACHINE_TREE}")
set(CMAKE_LIBRARY_ARCHITECTURE "${TYMPAN_MULTIARCH}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${TYMPAN_MACHINE_TREE}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${TYMPAN_MACHINE_TREE}/usr/lib/${TYMPAN_MULTIARCH}/pkgconfig:${TYMPAN_MACHINE_TREE}/usr/share/pkgconfig")
