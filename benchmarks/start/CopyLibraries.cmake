# Copies the shared libraries FILES into FOLDER under the names that programs load them by, without their run paths.
foreach(file IN LISTS FILES)
    execute_process(COMMAND objdump -p ${file} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCH "SONAME +([^\n]+)" ignored "${headers}")
    configure_file(${file} ${FOLDER}/${CMAKE_MATCH_1} COPYONLY)
    file(RPATH_REMOVE FILE ${FOLDER}/${CMAKE_MATCH_1})
endforeach()
file(TOUCH ${FOLDER}/stamp)
