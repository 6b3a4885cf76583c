# libphonenumber's C++ library, which brings no CMake package of its own: Phonenumber::Phonenumber.
find_path(Phonenumber_INCLUDE_DIR phonenumbers/phonenumberutil.h)
find_library(Phonenumber_LIBRARY phonenumber)
find_package(Protobuf QUIET)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Phonenumber REQUIRED_VARS Phonenumber_LIBRARY Phonenumber_INCLUDE_DIR Protobuf_FOUND)
mark_as_advanced(Phonenumber_INCLUDE_DIR Phonenumber_LIBRARY)

if(Phonenumber_FOUND AND NOT TARGET Phonenumber::Phonenumber)
    add_library(Phonenumber::Phonenumber UNKNOWN IMPORTED)
    set_target_properties(
        Phonenumber::Phonenumber
        PROPERTIES IMPORTED_LOCATION ${Phonenumber_LIBRARY}
                   INTERFACE_INCLUDE_DIRECTORIES ${Phonenumber_INCLUDE_DIR}
                   INTERFACE_LINK_LIBRARIES protobuf::libprotobuf
    )
endif()
