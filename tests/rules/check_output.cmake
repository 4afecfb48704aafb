# Runs PROGRAM (with ARGUMENT, if there is one), which must end well and print what the regular expression EXPECTED says.
execute_process(COMMAND "${PROGRAM}" ${ARGUMENT} OUTPUT_VARIABLE output RESULT_VARIABLE result)
message("${output}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "The program ended with ${result}")
endif()
if(NOT output MATCHES "${EXPECTED}")
    message(FATAL_ERROR "The program did not print: ${EXPECTED}")
endif()
