# The fuzz targets: one for each way that bytes from outside come in. A target's source is its name
# with ".cpp"; what it shares with others is named behind it.
set(TYMPAN_FUZZ_TARGETS
    api_fuzz
    ct_fuzz
    jpeg_fuzz
    lw_fuzz
    lw_stream_fuzz
    lw_variant_fuzz
    lw_writer_fuzz
    page_fuzz
    tiff_fuzz
    tiff_it_fuzz)

if(NOT TARGET GTest::gtest)
    find_package(GTest REQUIRED)
endif()
set(lw_stream_fuzz_SOURCES "${PROJECT_SOURCE_DIR}/tests/lw/lw_reference.cpp")
set(lw_stream_fuzz_LIBRARIES GTest::gtest)
set(api_fuzz_SOURCES
    "${PROJECT_SOURCE_DIR}/tests/faults/allocations.cpp" "${CMAKE_CURRENT_LIST_DIR}/tiff_it_files.cpp")
if(TYMPAN_WITH_LIBTIFF)
    foreach(name tiff_fuzz tiff_it_fuzz)
        set(${name}_SOURCES "${CMAKE_CURRENT_LIST_DIR}/libtiff_reading.cpp")
        set(${name}_LIBRARIES TIFF::TIFF)
    endforeach()
else()
    list(REMOVE_ITEM TYMPAN_FUZZ_TARGETS tiff_fuzz tiff_it_fuzz) # libtiff is what they compare with
endif()

# tympan_fuzz_program(PROGRAM TARGET SOURCE...): a program of a target and the sources that run it.
function(tympan_fuzz_program program target)
    add_executable(${program} "${PROJECT_SOURCE_DIR}/fuzz/${target}.cpp" ${${target}_SOURCES} ${ARGN})
    target_link_libraries(${program} PRIVATE tympan_objects tympan_test_files ${${target}_LIBRARIES})
endfunction()
