# libpsl, which brings a pkg-config file only: Libpsl::Libpsl.
find_path(Libpsl_INCLUDE_DIR libpsl.h)
find_library(Libpsl_LIBRARY psl)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Libpsl REQUIRED_VARS Libpsl_LIBRARY Libpsl_INCLUDE_DIR)
mark_as_advanced(Libpsl_INCLUDE_DIR Libpsl_LIBRARY)

if(Libpsl_FOUND AND NOT TARGET Libpsl::Libpsl)
    add_library(Libpsl::Libpsl UNKNOWN IMPORTED)
    set_target_properties(
        Libpsl::Libpsl PROPERTIES IMPORTED_LOCATION ${Libpsl_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${Libpsl_INCLUDE_DIR}
    )
endif()
