# Toolchain file: 32-bit x86 programs by the compiler of x86-64, which runs them as they are. They find
# the libraries of their tree, its loader included, by paths in the programs themselves. The preset goes
# without warnings of conversions: places in memory that were counted in 64 bits are 32-bit indexes here,
# and what is allocated has been held against kAddressable (platform/claims.h).

set(CMAKE_SYSTEM_PROCESSOR i686)
set(TYMPAN_MACHINE i386)
set(TYMPAN_MULTIARCH i386-linux-gnu)
include("${CMAKE_CURRENT_LIST_DIR}/machine-tree.cmake")

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
# The numbers of doubles are those of all other machines: the old registers would keep more digits.
add_compile_options(-m32 -msse2 -mfpmath=sse)
add_link_options(-m32)
set(tympan_libraries "${TYMPAN_MACHINE_TREE}/usr/lib/${TYMPAN_MULTIARCH}")
# The old tags: they hold for the libraries of the libraries too.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${tympan_libraries}/ld-linux.so.2,--disable-new-dtags,-rpath,${tympan_libraries}")
