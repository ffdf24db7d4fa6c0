# Run after the bundle has been installed: puts Qt's libraries and plug-ins into it, and signs all of it. Ad hoc, unless
# KV_SIGNING_IDENTITY names one of the keychain's; only that can be notarised, and so needs a time and the hardened run
# time, under which a program signed ad hoc would refuse Qt's libraries.
cmake_minimum_required(VERSION 3.24)

set(bundle "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/kvOrvantaLogic_Tool.app")
execute_process(COMMAND "${KV_MACDEPLOYQT}" "${bundle}" COMMAND_ERROR_IS_FATAL ANY)

set(sign codesign --force --sign)
if("$ENV{KV_SIGNING_IDENTITY}" STREQUAL "")
    list(APPEND sign -)
else()
    list(APPEND sign "$ENV{KV_SIGNING_IDENTITY}" --options runtime --timestamp)
endif()
# What is inside first: the bundle's signature covers it.
file(GLOB_RECURSE libraries "${bundle}/Contents/*.dylib")
file(GLOB frameworks "${bundle}/Contents/Frameworks/*.framework")
execute_process(COMMAND ${sign} ${libraries} ${frameworks} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${sign} "${bundle}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND codesign --verify --deep --strict "${bundle}" COMMAND_ERROR_IS_FATAL ANY)
