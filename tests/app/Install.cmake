# Installs the build into a folder of its own and looks for the program and for its model where the program looks.
set(prefix "${BUILD}/install-test")
file(REMOVE_RECURSE "${prefix}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}" OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
foreach(file bin/kvOrvantaLogic_Tool share/kvOrvantaLogic_Tool/kvOrvantaLogic_Tool.momd/Model.plist)
    if(NOT EXISTS "${prefix}/${file}")
        message(FATAL_ERROR "${file} was not installed")
    endif()
endforeach()
