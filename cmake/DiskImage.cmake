# The disk image that CPack makes of the program on macOS: the bundle, whole and signed, beside a link to the folder of
# applications. scripts/package calls it and tells what the environment can say.

find_program(KV_MACDEPLOYQT macdeployqt HINTS "${Qt6_DIR}/../../../bin" REQUIRED)
install(CODE "set(KV_MACDEPLOYQT \"${KV_MACDEPLOYQT}\")")
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/CompleteBundle.cmake")

set(CPACK_GENERATOR DragNDrop)
set(CPACK_PACKAGE_FILE_NAME "kvOrvantaLogic_Tool-${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "kvOrvantaLogic_Tool developers")
include(CPack)
