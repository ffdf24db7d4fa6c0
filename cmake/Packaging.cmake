# What is installed beside the program on a Linux desktop, and the Debian package that CPack makes of it all. The program,
# the one that carries out its requests and its model are installed in app/; nothing else of the tree is.

set(KV_PACKAGE kvorvantalogic-tool)
set(KV_PACKAGE_RELEASE 1)
set(KV_MAINTAINER "kvOrvantaLogic_Tool developers <developers@kvorvanta.invalid>")

set(linux "${PROJECT_SOURCE_DIR}/resources/linux")
set(packaging "${CMAKE_BINARY_DIR}/packaging")

# kv_gzip(file name): compresses a file to NAME.gz of the folder, without its time, so that equal files stay equal.
find_program(KV_GZIP gzip REQUIRED)
function(kv_gzip file name)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    execute_process(COMMAND "${KV_GZIP}" -9nc "${file}" OUTPUT_FILE "${packaging}/${name}.gz"
                    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# kv_install_gzipped(file folder name): installs a file compressed.
function(kv_install_gzipped file folder name)
    kv_gzip("${file}" "${name}")
    install(FILES "${packaging}/${name}.gz" DESTINATION "${folder}")
endfunction()

# The desktop finds the program's entry, icon and description by its identifier, which the windows carry too.
configure_file("${linux}/application.desktop.in" "${packaging}/${KV_BUNDLE_IDENTIFIER}.desktop" @ONLY)
install(FILES "${packaging}/${KV_BUNDLE_IDENTIFIER}.desktop" DESTINATION share/applications)
configure_file("${linux}/metainfo.xml.in" "${packaging}/${KV_BUNDLE_IDENTIFIER}.metainfo.xml" @ONLY)
install(FILES "${packaging}/${KV_BUNDLE_IDENTIFIER}.metainfo.xml" DESTINATION share/metainfo)
set(icon "${PROJECT_SOURCE_DIR}/resources/icon")
install(FILES "${icon}/kvOrvantaLogic_Tool.svg" DESTINATION share/icons/hicolor/scalable/apps
        RENAME "${KV_BUNDLE_IDENTIFIER}.svg")
foreach(size 16 24 32 48 64 128 256 512)
    install(FILES "${icon}/${size}.png" DESTINATION "share/icons/hicolor/${size}x${size}/apps"
            RENAME "${KV_BUNDLE_IDENTIFIER}.png")
endforeach()

configure_file("${linux}/kvOrvantaLogic_Tool.1.in" "${packaging}/kvOrvantaLogic_Tool.1" @ONLY)
kv_install_gzipped("${packaging}/kvOrvantaLogic_Tool.1" share/man/man1 kvOrvantaLogic_Tool.1)
kv_install_gzipped("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "share/doc/${KV_PACKAGE}" changelog)
kv_install_gzipped("${linux}/debian/changelog" "share/doc/${KV_PACKAGE}" changelog.Debian)
install(FILES "${linux}/debian/copyright" DESTINATION "share/doc/${KV_PACKAGE}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${KV_PACKAGE}")
set(CPACK_PACKAGE_VENDOR "kvOrvantaLogic_Tool developers")
set(CPACK_PACKAGE_CONTACT "${KV_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "decide which plug-in parameter sits under which pot")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/OpenFolders.cmake")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${KV_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Logic lays a plug-in's parameters onto the eight pots of the Orvanta control
surface, page after page. This program shows a plug-in's parameters beside a
picture of the front panel, puts any of them on any pot of any page, and keeps
the mapping as it stood before the first save and before the last one.
The mapping can be written as a chart and shared through a community library.")
# The libraries that the program is linked with. Qt's platform plug-ins for X11 and for no screen at all are in
# libqt6gui6, and the one for printers in libqt6printsupport6, so nothing has to be added to them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Wayland sessions, opening the chart, and fonts for the letters that plug-in makers use in names.
string(CONCAT CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "qt6-wayland, xdg-utils, fonts-dejavu-core, fonts-droid-fallback | fonts-noto-cjk, fonts-noto-color-emoji")
include(CPack)
if(TARGET community_admin)
    include(cmake/ServerPackage.cmake)
endif()
