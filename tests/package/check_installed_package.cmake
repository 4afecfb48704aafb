# Installs the built library, moves what was installed, and builds and runs three programs against it, two of them made of what
# stands in the README: once through find_package and once through pkg-config with a plain compiler command.
#
# Expects: build_dir, config, work_dir, source_dir (this folder), readme, compiler, compiler_flags, generator,
# make_program, libdir (relative to the prefix), version, soversion.

function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${what} failed (${result}):\n${command}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# Sets `program` and `promised_output` to what stands in the README.
function(read_first_program)
    file(READ "${readme}" text)
    if(NOT text MATCHES "\n```cpp\n([^`]*)\n```\n\nIt prints `([^`]*)`")
        message(FATAL_ERROR "no program with its output was found in ${readme}")
    endif()
    set(program "${CMAKE_MATCH_1}\n" PARENT_SCOPE)
    set(promised_output "${CMAKE_MATCH_2}\n" PARENT_SCOPE)
endfunction()

# Sets `storing_program` to the first program with the README's lines that store and load a tool at its end. What it returns says
# whether the loaded tool is equal to the stored one.
function(read_storing_program)
    file(READ "${readme}" text)
    if(NOT text MATCHES "\n```cpp\n([^`]*storing.finish[^`]*)```\n\n```cpp\n([^`]*loading.finish[^`]*)```\n")
        message(FATAL_ERROR "no lines that store and load were found in ${readme}")
    endif()
    set(storing "${CMAKE_MATCH_1}")
    set(loading "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "}\n$" "" begin "${program}")
    set(storing_program "${begin}${storing}const vxClassifierTool& stored = tool;\n{\n${loading}return tool == stored ? 0 : 1;\n}\n}\n"
        PARENT_SCOPE)
endfunction()

function(expect_output program expected)
    run("running ${program}" "${CMAKE_COMMAND}" -E chdir "${work_dir}" "${CMAKE_COMMAND}" -E env
        "LD_LIBRARY_PATH=${prefix}/${libdir}" "${program}")
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} printed:\n${output}instead of:\n${expected}")
    endif()
endfunction()

function(run_programs folder)
    expect_output("${folder}/round_trip" "refused: The archive ends too early.\n")
    expect_output("${folder}/first_program" "${promised_output}")
    expect_output("${folder}/storing_program" "${promised_output}")
endfunction()

file(REMOVE_RECURSE "${work_dir}")
file(MAKE_DIRECTORY "${work_dir}")
set(prefix "${work_dir}/moved here")
run("installing" "${CMAKE_COMMAND}" --install "${build_dir}" --config "${config}" --prefix "${work_dir}/installed")
file(RENAME "${work_dir}/installed" "${prefix}")

foreach(link "libvxclassifier.so" "libvxclassifier.so.${soversion}")
    if(NOT IS_SYMLINK "${prefix}/${libdir}/${link}")
        message(FATAL_ERROR "${link} was not installed as a link")
    endif()
endforeach()

read_first_program()
set(first_program "${work_dir}/first_program.cpp")
file(WRITE "${first_program}" "${program}")
read_storing_program()
set(storing_program_file "${work_dir}/storing_program.cpp")
file(WRITE "${storing_program_file}" "${storing_program}")

# Through find_package. Its own warnings would be a defect of the headers, so they are errors.
separate_arguments(flags UNIX_COMMAND "${compiler_flags}")
set(cmake_build "${work_dir}/through find_package")
run("configuring the consumer"
    "${CMAKE_COMMAND}" -S "${source_dir}/consumer" -B "${cmake_build}" -G "${generator}"
    "-DCMAKE_MAKE_PROGRAM=${make_program}" "-DCMAKE_BUILD_TYPE=${config}" "-DCMAKE_CXX_COMPILER=${compiler}"
    "-DCMAKE_CXX_FLAGS=${compiler_flags} -Wall -Wextra -Werror" "-DCMAKE_PREFIX_PATH=${prefix}"
    "-Dexpected_version=${version}" "-Dfirst_program=${first_program}"
    "-Dstoring_program=${storing_program_file}")
run("building the consumer" "${CMAKE_COMMAND}" --build "${cmake_build}")
file(STRINGS "${cmake_build}/CMakeCache.txt" found REGEX "^vxclassifier_DIR:PATH=")
if(NOT found STREQUAL "vxclassifier_DIR:PATH=${prefix}/${libdir}/cmake/vxclassifier")
    message(FATAL_ERROR "find_package found another package: ${found}")
endif()
run_programs("${cmake_build}")

# Through pkg-config.
set(ENV{PKG_CONFIG_PATH} "${prefix}/${libdir}/pkgconfig")
run("asking pkg-config for the version" pkg-config --modversion vxclassifier)
string(STRIP "${output}" found_version)
if(NOT found_version STREQUAL version)
    message(FATAL_ERROR "pkg-config says version ${found_version} instead of ${version}")
endif()
run("asking pkg-config for the flags" pkg-config --cflags --libs vxclassifier)
separate_arguments(package_flags UNIX_COMMAND "${output}")
file(MAKE_DIRECTORY "${work_dir}/through pkg-config")
foreach(source "${source_dir}/consumer/round_trip.cpp" "${first_program}" "${storing_program_file}")
    cmake_path(GET source STEM name)
    run("building ${name} with pkg-config's flags"
        "${compiler}" ${flags} -std=c++17 -Wall -Wextra -Werror "${source}" -o "${work_dir}/through pkg-config/${name}"
        ${package_flags})
endforeach()
run_programs("${work_dir}/through pkg-config")
