# What a caller's build finds after "cmake --install": the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SoftphoneCore)

set(QML_IMPORT_DIR ${CMAKE_INSTALL_LIBDIR}/qt6/qml)
configure_package_config_file(
    cmake/SoftphoneCoreConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfig.cmake
    INSTALL_DESTINATION ${config_dir} PATH_VARS QML_IMPORT_DIR
)
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfigVersion.cmake COMPATIBILITY SameMajorVersion
)
# Found from the file's own place, so that the installed tree can be moved.
file(RELATIVE_PATH PC_PREFIX_FROM_FILE /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" PC_PREFIX_FROM_FILE "${PC_PREFIX_FROM_FILE}")
set(pkgconfig_files softphone-core)
install(EXPORT SoftphoneCoreTargets NAMESPACE SoftphoneCore:: DESTINATION ${config_dir} COMPONENT dev)
if(SOFTPHONECORE_BUILD_CLIENT)
    list(APPEND pkgconfig_files softphone-client)
    install(EXPORT SoftphoneCoreClientTargets NAMESPACE SoftphoneCore:: DESTINATION ${config_dir} COMPONENT dev)
endif()
if(TARGET SoftphoneQml)
    install(EXPORT SoftphoneCoreQmlTargets NAMESPACE SoftphoneCore:: DESTINATION ${config_dir} COMPONENT dev)
endif()
foreach(file ${pkgconfig_files})
    configure_file(cmake/${file}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${file}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/SoftphoneCoreConfigVersion.cmake
        DESTINATION ${config_dir} COMPONENT dev
)

# Debian packages, one of each component: scripts/package makes them.
if(PROJECT_IS_TOP_LEVEL)
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGE_NAME softphone-core)
    set(CPACK_PACKAGE_CONTACT "softphone-core maintainers <maintainers@softphone-core.example>")
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has one of its own
    set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
    set(CPACK_COMPONENTS_ALL runtime client tools dev)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_STRIP_FILES ON)

    # What every Debian package has to say about itself.
    string(TIMESTAMP PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, where that is set
    configure_file(cmake/debian/changelog.in ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog @ONLY)
    execute_process(COMMAND gzip -9nkf ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)
    # softphonecore_describe(<component> <package> <one line> <paragraph of lines that are no longer than 79 characters>)
    function(softphonecore_describe component package summary text)
        string(TOUPPER ${component} COMPONENT)
        set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package} PARENT_SCOPE)
        set(CPACK_COMPONENT_${COMPONENT}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
        install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/copyright
                      ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz
                DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component}
        )
    endfunction()
    softphonecore_describe(
        runtime softphone-core
        "core library of a desktop softphone"
        "Records with JSON, the assets database, telephony vocabulary, contacts, text,\nfiles and transfers, for a softphone and PBX client on Qt 6."
    )
    softphonecore_describe(
        client softphone-client
        "client library of a desktop softphone"
        "What windows bind to: telephone numbers, links in chat, the contact directory,\ntransfers, and the channel between copies of the program."
    )
    if(TARGET SoftphoneQml)
        list(APPEND CPACK_COMPONENTS_ALL qml)
        softphonecore_describe(
            qml softphone-qml
            "QML module of a desktop softphone"
            "The client library, the palette and the texts of a softphone as the module\nSoftphone."
        )
        set(CPACK_COMPONENT_QML_DEPENDS client)
        set(CPACK_DEBIAN_QML_PACKAGE_SECTION libs)
        set(CPACK_DEBIAN_QML_PACKAGE_SHLIBDEPS ON)
        # Debian's QtQml names neither of the two modules that it imports.
        set(CPACK_DEBIAN_QML_PACKAGE_DEPENDS
            "qml6-module-qtqml, qml6-module-qtqml-models, qml6-module-qtqml-workerscript"
        )
    endif()
    softphonecore_describe(
        tools softphone-tools
        "command for the people who support a softphone's users"
        "The command spcore shows and checks what a softphone stores and reaches:\nassets, contacts, numbers, recordings, transfers, and the machine itself."
    )
    softphonecore_describe(
        dev softphone-core-dev
        "headers and build files of a desktop softphone's libraries"
        "Headers, a CMake package, pkg-config files and gdb's printers, to build against\nthe core, the client library and the QML module."
    )
    if(SOFTPHONECORE_API_DOCUMENTATION)
        list(APPEND CPACK_COMPONENTS_ALL doc)
        softphonecore_describe(
            doc softphone-doc
            "documentation of a desktop softphone's libraries"
            "The API documentation of both libraries and the QML module, and the guide, as\nHTML that can be searched."
        )
        install(DIRECTORY ${SOFTPHONECORE_API_DOCUMENTATION} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/softphone-doc
                COMPONENT doc
        )
        set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
        set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
    endif()

    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src/core;${PROJECT_BINARY_DIR}/src/client;${PROJECT_BINARY_DIR}/src/qml")
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
    foreach(library RUNTIME CLIENT QML)
        set(CPACK_DEBIAN_${library}_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/triggers)
    endforeach()
    # A plugin that is loaded by name: no linker sees it.
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS libqt6sql6-sqlite)

    set(CPACK_COMPONENT_CLIENT_DEPENDS runtime)
    set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_CLIENT_PACKAGE_SHLIBDEPS ON)

    set(CPACK_COMPONENT_TOOLS_DEPENDS runtime client)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)

    # The CMake package looks for the file of each library that it names.
    set(CPACK_COMPONENT_DEV_DEPENDS runtime client)
    if(TARGET SoftphoneQml)
        list(APPEND CPACK_COMPONENT_DEV_DEPENDS qml)
    endif()
    set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qt6-base-dev (>= 6.4)")
    include(CPack)
endif()
