# What `cmake --install` puts where: the shared library, the public headers, the CMake package, the pkg-config file and the
# documentation.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vxclassifier")
set(pkg_config_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(
    TARGETS vxclassifier
    EXPORT vxclassifierTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT vxclassifier_runtime
            NAMELINK_COMPONENT vxclassifier_development)
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/include/vxclassifier"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    COMPONENT vxclassifier_development
    FILES_MATCHING
    PATTERN "*.h")

install(
    EXPORT vxclassifierTargets
    NAMESPACE vxclassifier::
    DESTINATION "${package_dir}"
    COMPONENT vxclassifier_development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/vxclassifierConfig.cmake.in" vxclassifierConfig.cmake
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(vxclassifierConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
    FILES "${CMAKE_CURRENT_BINARY_DIR}/vxclassifierConfig.cmake"
          "${CMAKE_CURRENT_BINARY_DIR}/vxclassifierConfigVersion.cmake"
    DESTINATION "${package_dir}"
    COMPONENT vxclassifier_development)

# The pkg-config file finds the prefix from its own place, so that an installed tree can be moved. Where the library
# has an absolute place of its own, that place says nothing of the prefix, which is then written out.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pkg_config_prefix "${CMAKE_INSTALL_PREFIX}")
    set(pkg_config_libdir "${CMAKE_INSTALL_LIBDIR}")
else()
    # Both ends are made absolute under a stand-in root: the real prefix may be "/".
    cmake_path(SET stand_in_dir NORMALIZE "/prefix/${pkg_config_dir}")
    file(RELATIVE_PATH up_to_prefix "${stand_in_dir}" "/prefix")
    string(REGEX REPLACE "/$" "" up_to_prefix "${up_to_prefix}")
    set(pkg_config_prefix "\${pcfiledir}/${up_to_prefix}")
    set(pkg_config_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(pkg_config_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
else()
    set(pkg_config_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/vxclassifier.pc.in" vxclassifier.pc @ONLY)
install(
    FILES "${CMAKE_CURRENT_BINARY_DIR}/vxclassifier.pc"
    DESTINATION "${pkg_config_dir}"
    COMPONENT vxclassifier_development)

# The pages that the headers point to, and the licence.
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/docs/"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}"
    COMPONENT vxclassifier_development)
install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}"
    COMPONENT vxclassifier_runtime)
