# The files of a report that are the same in every report, as text in the command. A change of one of
# them configures the build again.
set(TYMPAN_REPORT_ASSETS
    index.html style.css theme.js facts.js elements.js filters.js grid.js viewer.js panel.js app.js)

set(TYMPAN_REPORT_ASSET_ROWS "")
foreach(asset IN LISTS TYMPAN_REPORT_ASSETS)
    set(path "${CMAKE_CURRENT_LIST_DIR}/${asset}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${path}")
    file(READ "${path}" text)
    string(APPEND TYMPAN_REPORT_ASSET_ROWS "    { \"${asset}\", R\"asset(${text})asset\" },\n")
endforeach()
configure_file("${CMAKE_CURRENT_LIST_DIR}/report_assets.cpp.in" report_assets.cpp @ONLY)
target_sources(tympan_subcommands PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/report_assets.cpp")
