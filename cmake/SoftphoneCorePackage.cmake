# What a caller's build finds after "cmake --install": the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SoftphoneCore)

configure_package_config_file(
    cmake/SoftphoneCoreConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfig.cmake
    INSTALL_DESTINATION ${config_dir}
)
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfigVersion.cmake COMPATIBILITY SameMajorVersion
)
configure_file(
    cmake/softphone-core.pc.in ${CMAKE_CURRENT_BINARY_DIR}/softphone-core.pc @ONLY
)

install(EXPORT SoftphoneCoreTargets NAMESPACE SoftphoneCore:: DESTINATION ${config_dir} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfigVersion.cmake
        DESTINATION ${config_dir} COMPONENT dev
)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/softphone-core.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev
)
