# Toolchain file: 32-bit x86 programs by the compiler of x86-64, which runs them as they are. They find
# the libraries of their tree, its loader included, by paths in the programs themselves.

set(CMAKE_SYSTEM_PROCESSOR i686)
set(TYMPAN_MACHINE i386)
set(TYMPAN_MULTIARCH i386-linux-gnu)
include("${CMAKE_CURRENT_LIST_DIR}/machine-tree.cmake")

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
add_compile_options(-m32)
add_link_options(-m32)
set(tympan_libraries "${TYMPAN_MACHINE_TREE}/usr/lib/${TYMPAN_MULTIARCH}")
# The old tags: they hold for the libraries of the libraries too.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${tympan_libraries}/ld-linux.so.2,--disable-new-dtags,-rpath,${tympan_libraries}")
