# Draws the score functions anew and compares the result with the drawing in the documentation. Expects PROGRAM, PYTHON,
# SCRIPT, DRAWING and OUTPUT.
execute_process(
    COMMAND "${PROGRAM}"
    COMMAND "${PYTHON}" "${SCRIPT}"
    OUTPUT_FILE "${OUTPUT}"
    RESULTS_VARIABLE results)
if(NOT results STREQUAL "0;0")
    message(FATAL_ERROR "The drawing could not be made: ${results}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${OUTPUT}" "${DRAWING}" RESULT_VARIABLE different)
if(different)
    message(FATAL_ERROR "${DRAWING} is not what the program's scores give; run: feature_scores | ${SCRIPT}")
endif()
