# A source that includes every header of the program: scripts/lint hands it to clang-tidy, which then reads what the
# headers have in common once. Never built.
set(all_headers "${PROJECT_BINARY_DIR}/all_headers.cpp")
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
    app/*.h chart/*.h community/*.h mapping/*.h panel/*.h platform/*.h plugins/*.h)
list(TRANSFORM headers PREPEND "#include \"")
list(TRANSFORM headers APPEND "\"\n")
list(JOIN headers "" includes)
file(CONFIGURE OUTPUT "${all_headers}" CONTENT "${includes}" @ONLY)
add_library(all_headers OBJECT EXCLUDE_FROM_ALL "${all_headers}")
target_link_libraries(all_headers PRIVATE interface)
