# Run by CPack before it packs: the folders that it made have what the user's mask left them, and the package's have to
# be open to everybody.
file(CHMOD_RECURSE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
