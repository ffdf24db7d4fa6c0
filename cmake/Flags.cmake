# One interface target carries what every source of ours is compiled with.
add_library(kv_flags INTERFACE)
target_compile_features(kv_flags INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
target_compile_options(kv_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlaps and overflows in std::string and std::vector that are not there (GCC bugs 105329, 105651).
    target_compile_options(kv_flags INTERFACE -Wno-restrict -Wno-stringop-overflow)
endif()
# What users get ends when its memory is damaged, and leaves nothing in it that could be turned against it.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT KV_SANITIZE)
    include(CheckCXXCompilerFlag)
    check_cxx_compiler_flag(-fcf-protection KV_HAS_CONTROL_FLOW_PROTECTION) # x86 alone has it
    target_compile_options(kv_flags INTERFACE -fstack-protector-strong
        $<$<BOOL:${KV_HAS_CONTROL_FLOW_PROTECTION}>:-fcf-protection>)
    target_compile_definitions(kv_flags INTERFACE _FORTIFY_SOURCE=2)
    if(NOT APPLE) # whose linker does the same unasked
        target_link_options(kv_flags INTERFACE -Wl,-z,relro,-z,now)
    endif()
endif()
if(KV_WARNINGS_AS_ERRORS)
    target_compile_options(kv_flags INTERFACE -Werror)
endif()
if(KV_SANITIZE)
    target_compile_options(kv_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                              -fno-omit-frame-pointer)
    target_link_options(kv_flags INTERFACE -fsanitize=address,undefined)
endif()
if(KV_FUZZ)
    # Where libFuzzer looks which way the program went.
    target_compile_options(kv_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# What a target that uses Qt adds: the widgets and no short keywords in our headers.
add_library(kv_qt_flags INTERFACE)
target_compile_definitions(kv_qt_flags INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
target_link_libraries(kv_qt_flags INTERFACE kv_flags Qt6::Widgets)

# kv_export_headers(target): whoever links it can include the headers of its folder, and nobody else can.
function(kv_export_headers target)
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE folder)
    set(root "${PROJECT_BINARY_DIR}/include/${folder}")
    file(MAKE_DIRECTORY "${root}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${root}/${folder}" SYMBOLIC)
    target_include_directories(${target} PUBLIC "${root}")
endfunction()

# kv_use_qt(target [headers]): links Qt and runs moc. Qt's headers are compiled once, for the target `headers`
# (platform_qt unless told), whose flags have to be the same.
function(kv_use_qt target)
    target_link_libraries(${target} PUBLIC kv_qt_flags)
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    list(APPEND ARGN platform_qt)
    list(GET ARGN 0 headers)
    target_precompile_headers(${target} REUSE_FROM ${headers})
endfunction()
