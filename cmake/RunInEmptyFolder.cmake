# Runs PROGRAM, a command, in FOLDER, emptied first, and fails when it does.

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
execute_process(COMMAND ${PROGRAM} WORKING_DIRECTORY "${FOLDER}" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM}: ${result}")
endif()
