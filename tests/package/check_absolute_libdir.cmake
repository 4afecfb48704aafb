# The pkg-config file where the library's folder is given as an absolute path: the path and the prefix are written out.
#
# Expects: project_dir, work_dir, compiler, generator, make_program.

file(REMOVE_RECURSE "${work_dir}")
execute_process(
    COMMAND
        "${CMAKE_COMMAND}" -S "${project_dir}" -B "${work_dir}" -G "${generator}"
        "-DCMAKE_MAKE_PROGRAM=${make_program}" "-DCMAKE_CXX_COMPILER=${compiler}" -DVXCLASSIFIER_TESTS=OFF
        -DVXCLASSIFIER_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX=/opt/some -DCMAKE_INSTALL_LIBDIR=/opt/other/lib
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "configuring failed:\n${output}")
endif()
set(ENV{PKG_CONFIG_PATH} "${work_dir}")
foreach(pair "prefix=/opt/some" "libdir=/opt/other/lib" "includedir=/opt/some/include")
    string(REPLACE "=" ";" pair "${pair}")
    list(GET pair 0 variable)
    list(GET pair 1 expected)
    execute_process(
        COMMAND pkg-config "--variable=${variable}" vxclassifier
        OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT value STREQUAL expected)
        message(FATAL_ERROR "${variable} is '${value}' instead of '${expected}'")
    endif()
endforeach()
