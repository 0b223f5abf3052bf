# The library's targets and the two functions by which each folder adds to them.
#
#   tympan_objects          every source of the library; tests and fuzzers link it, internals included
#   tympan (tympan::tympan) the shared library, with only TYMPAN_API exported
#
# Client code inside the tree (the command, the examples) sees only the headers that are installed:
# they are gathered under build/include/tympan-1, the same tree as on a client's machine.

set(TYMPAN_STAGED_HEADERS "${PROJECT_BINARY_DIR}/include/tympan-1")
set(TYMPAN_INSTALLED_HEADERS "${CMAKE_INSTALL_INCLUDEDIR}/tympan-1")

add_library(tympan_objects OBJECT)
# Whoever links the objects has the library within: on Windows nothing of it is to be imported.
target_compile_definitions(tympan_objects PUBLIC TYMPAN_BUILDING)
set_target_properties(tympan_objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
target_include_directories(tympan_objects PUBLIC "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/generated")
if(TYMPAN_BLOCK_SIZE)
    target_compile_definitions(tympan_objects PUBLIC TYMPAN_BLOCK_SIZE=${TYMPAN_BLOCK_SIZE})
endif()

if(TYMPAN_WITH_LIBTIFF)
    find_package(TIFF 4.5 REQUIRED) # 4.5 has handlers of errors for each open file
endif()

# tympan_sources(FILE...): sources of the folder that calls it.
function(tympan_sources)
    foreach(source IN LISTS ARGN)
        target_sources(tympan_objects PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
    endforeach()
endfunction()

# tympan_public_headers(FILE...): headers of the folder that calls it that are installed.
function(tympan_public_headers)
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    file(MAKE_DIRECTORY "${TYMPAN_STAGED_HEADERS}/${folder}")
    foreach(header IN LISTS ARGN)
        file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${header}"
            "${TYMPAN_STAGED_HEADERS}/${folder}/${header}" COPY_ON_ERROR SYMBOLIC)
        install(FILES "${header}" DESTINATION "${TYMPAN_INSTALLED_HEADERS}/${folder}"
            COMPONENT development)
    endforeach()
endfunction()

# tympan_finish_library(): makes the shared library of what the folders have added.
macro(tympan_finish_library)
    add_library(tympan SHARED)
    add_library(tympan::tympan ALIAS tympan)
    target_link_libraries(tympan PRIVATE tympan_objects)
    target_compile_features(tympan PUBLIC cxx_std_20)
    target_include_directories(tympan INTERFACE
        "$<BUILD_INTERFACE:${TYMPAN_STAGED_HEADERS}>"
        "$<INSTALL_INTERFACE:${TYMPAN_INSTALLED_HEADERS}>")
    set_target_properties(tympan PROPERTIES
        VERSION "${PROJECT_VERSION}"
        SOVERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
endmacro()
