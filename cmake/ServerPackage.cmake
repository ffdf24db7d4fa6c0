# The Debian package of the community library's server and of the host's tool: the install component "server", which is in
# nothing else, and a configuration of its own for CPack (CPackServerConfig.cmake), since it shares neither libraries nor
# files with the program's package.

set(KV_SERVER_PACKAGE "${KV_PACKAGE}-community-server")
set(server "${linux}/community")

# Paths are from the root: a package with a service has files below /etc and /usr.
macro(kv_install_server)
    install(${ARGN} COMPONENT server EXCLUDE_FROM_ALL)
endmacro()

kv_install_server(TARGETS community_server community_admin RUNTIME DESTINATION usr/bin)
kv_install_server(FILES "${server}/kvorvantalogic-community.service" DESTINATION usr/lib/systemd/system)
kv_install_server(FILES "${server}/kvorvantalogic-community.default" DESTINATION etc/default
                  RENAME kvorvantalogic-community)
foreach(manual community_server.8 community_admin.8)
    configure_file("${server}/${manual}.in" "${packaging}/${manual}" @ONLY)
    kv_gzip("${packaging}/${manual}" "${manual}")
    kv_install_server(FILES "${packaging}/${manual}.gz" DESTINATION usr/share/man/man8)
endforeach()
set(documents "usr/share/doc/${KV_SERVER_PACKAGE}")
kv_install_server(FILES "${packaging}/changelog.gz" "${packaging}/changelog.Debian.gz" "${linux}/debian/copyright"
                        "${PROJECT_SOURCE_DIR}/tools/community_server/README.md"
                  DESTINATION "${documents}")
kv_install_server(FILES "${server}/nginx.conf" DESTINATION "${documents}/examples")

configure_file("${PROJECT_SOURCE_DIR}/cmake/CPackServerConfig.cmake.in" "${CMAKE_BINARY_DIR}/CPackServerConfig.cmake"
               @ONLY)
