# The libraries that the benchmarks compare with. Each that is installed becomes a target bench_rival_NAME; of each that
# is not, a line is said, and its rows are left out. As imported targets they are system libraries to the compiler, so
# their headers give no warnings.

function(bench_rival name what)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "INCLUDE;LINK")
    foreach(part IN LISTS arg_INCLUDE arg_LINK)
        if(NOT part)
            message(NOTICE "bench: ${what} is not installed; its rows are left out")
            return()
        endif()
    endforeach()
    add_library(bench_rival_${name} INTERFACE IMPORTED GLOBAL)
    target_include_directories(bench_rival_${name} INTERFACE ${arg_INCLUDE})
    target_link_libraries(bench_rival_${name} INTERFACE ${arg_LINK})
endfunction()

# Debian's libopencv-ml-dev comes without a CMake package of its own.
find_path(BENCH_OPENCV_INCLUDE opencv2/ml.hpp PATH_SUFFIXES opencv4)
find_library(BENCH_OPENCV_ML opencv_ml)
find_library(BENCH_OPENCV_CORE opencv_core)
bench_rival(opencv "OpenCV (libopencv-ml-dev)" INCLUDE "${BENCH_OPENCV_INCLUDE}"
            LINK "${BENCH_OPENCV_ML}" "${BENCH_OPENCV_CORE}")

find_path(BENCH_NANOFLANN_INCLUDE nanoflann.hpp)
bench_rival(nanoflann "nanoflann (libnanoflann-dev)" INCLUDE "${BENCH_NANOFLANN_INCLUDE}")

find_path(BENCH_FAISS_INCLUDE faiss/IndexFlat.h)
find_library(BENCH_FAISS faiss)
find_library(BENCH_LAPACK lapack)
find_library(BENCH_BLAS blas)
find_package(OpenMP QUIET COMPONENTS CXX)
if(OpenMP_CXX_FOUND)
    set(BENCH_OPENMP OpenMP::OpenMP_CXX)
endif()
bench_rival(faiss "FAISS (libfaiss-dev)" INCLUDE "${BENCH_FAISS_INCLUDE}"
            LINK "${BENCH_FAISS}" "${BENCH_LAPACK}" "${BENCH_BLAS}" "${BENCH_OPENMP}")

find_path(BENCH_FUZZYLITE_INCLUDE fl/Headers.h)
find_library(BENCH_FUZZYLITE fuzzylite)
bench_rival(fuzzylite "fuzzylite (libfuzzylite-dev)" INCLUDE "${BENCH_FUZZYLITE_INCLUDE}" LINK "${BENCH_FUZZYLITE}")

find_path(BENCH_CEREAL_INCLUDE cereal/cereal.hpp)
bench_rival(cereal "cereal (libcereal-dev)" INCLUDE "${BENCH_CEREAL_INCLUDE}")

find_path(BENCH_BOOST_INCLUDE boost/archive/binary_oarchive.hpp)
find_library(BENCH_BOOST_SERIALIZATION boost_serialization)
bench_rival(boost "Boost.Serialization (libboost-serialization-dev)" INCLUDE "${BENCH_BOOST_INCLUDE}"
            LINK "${BENCH_BOOST_SERIALIZATION}")
