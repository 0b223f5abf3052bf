# Toolchain file: programs of a big-endian machine with unsigned plain chars, run by an emulator.

set(CMAKE_SYSTEM_PROCESSOR s390x)
set(TYMPAN_MACHINE s390x)
set(TYMPAN_MULTIARCH s390x-linux-gnu)
include("${CMAKE_CURRENT_LIST_DIR}/machine-tree.cmake")

set(CMAKE_C_COMPILER s390x-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x -L "${TYMPAN_MACHINE_TREE}")
