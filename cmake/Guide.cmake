# The user guide as HTML pages, beside the program's other resources: made of the Markdown in docs/guide when the program is
# built. Without the converter there is none, and the program hides the item that opens it.
find_program(KV_CMARK cmark-gfm)
find_package(Python3 COMPONENTS Interpreter QUIET)
if(NOT KV_CMARK OR NOT Python3_Interpreter_FOUND)
    message(STATUS "cmark-gfm or Python 3 is missing; the user guide is not made")
    return()
endif()

set(guide "${PROJECT_SOURCE_DIR}/docs/guide")
set(maker "${PROJECT_SOURCE_DIR}/tools/guide/make_html.py")
set(made "${CMAKE_BINARY_DIR}/${KV_RESOURCES_FOLDER}/guide")
file(GLOB pages CONFIGURE_DEPENDS RELATIVE "${guide}" "${guide}/*.md")
file(GLOB pictures CONFIGURE_DEPENDS RELATIVE "${guide}" "${guide}/images/*.png")
set(files guide.css ${pages} ${pictures})
list(TRANSFORM files PREPEND "${guide}/" OUTPUT_VARIABLE sources)
list(TRANSFORM files REPLACE "\\.md$" ".html")
list(TRANSFORM files PREPEND "${made}/" OUTPUT_VARIABLE results)
add_custom_command(OUTPUT ${results}
    # Whole, so that a page that is gone is gone there, too.
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${made}"
    COMMAND "${Python3_EXECUTABLE}" -B "${maker}" "${KV_CMARK}" "${guide}" "${made}" "${PROJECT_VERSION}"
    DEPENDS ${sources} "${maker}" COMMENT "Making the user guide" VERBATIM)
add_custom_target(guide ALL DEPENDS ${results})
add_dependencies(kvOrvantaLogic_Tool guide)

foreach(file result IN ZIP_LISTS files results)
    cmake_path(SET path "${KV_RESOURCES_FOLDER}/guide/${file}")
    cmake_path(GET path PARENT_PATH folder)
    if(APPLE)
        target_sources(kvOrvantaLogic_Tool PRIVATE "${result}")
        set_source_files_properties("${result}" PROPERTIES MACOSX_PACKAGE_LOCATION "${folder}")
    else()
        install(FILES "${result}" DESTINATION "${folder}")
    endif()
endforeach()
