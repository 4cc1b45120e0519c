# Headers, shared libraries, CMake package and pkg-config files. Nothing in what is installed names an
# absolute path, so that the tree may be moved as a whole.
include(CMakePackageConfigHelpers)

set(vxs_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxl_audio)

install(
    TARGETS vxl_audio
    EXPORT vxl_audio_targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
set(vxs_pkgconfig_files vxl_audio)
if(TARGET vxl_sync)
    install(
        TARGETS vxl_sync
        EXPORT vxl_audio_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    list(APPEND vxs_pkgconfig_files vxl_sync)
endif()
install(
    EXPORT vxl_audio_targets
    NAMESPACE vxl_audio::
    DESTINATION ${vxs_package_dir})

configure_package_config_file(cmake/vxl_audio-config.cmake.in vxl_audio-config.cmake
                              INSTALL_DESTINATION ${vxs_package_dir})
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/vxl_audio-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxl_audio-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vxl_audio-config-version.cmake
        DESTINATION ${vxs_package_dir})

# The prefix is found from where the file lies; the depth depends on the platform's library folder.
set(vxs_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH vxs_pkgconfig_to_prefix /prefix/${vxs_pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" vxs_pkgconfig_to_prefix "${vxs_pkgconfig_to_prefix}")
foreach(name IN LISTS vxs_pkgconfig_files)
    configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${vxs_pkgconfig_dir})
endforeach()
