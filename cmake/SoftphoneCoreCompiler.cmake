# Language level, warnings and sanitizers, gathered in one interface target that
# every target of this project links privately and no caller ever sees.

add_library(SoftphoneCoreCompiler INTERFACE)
target_compile_features(SoftphoneCoreCompiler INTERFACE cxx_std_20)
target_compile_definitions(
    SoftphoneCoreCompiler
    INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS
              QT_NO_FOREACH
)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(
        SoftphoneCoreCompiler
        INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                  # Qt Test's own macros narrow in Qt 6.8.
                  $<$<NOT:$<BOOL:$<TARGET_PROPERTY:SOFTPHONECORE_QT_TEST>>>:-Wconversion>
                  $<$<BOOL:${SOFTPHONECORE_WERROR}>:-Werror>
    )
endif()

if(SOFTPHONECORE_SANITIZE)
    # In the sanitizers' own code GCC sees reads of what is not initialised, inside std::regex for one, and after
    # the end of an empty QByteArray whose size was asked before.
    target_compile_options(
        SoftphoneCoreCompiler INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-array-bounds>
    )
    target_compile_options(
        SoftphoneCoreCompiler INTERFACE -fsanitize=${SOFTPHONECORE_SANITIZE} -fno-omit-frame-pointer
                                        -fno-sanitize-recover=all
    )
    target_link_options(SoftphoneCoreCompiler INTERFACE -fsanitize=${SOFTPHONECORE_SANITIZE})
endif()

# The library itself is instrumented too, so that the fuzzer sees which of its branches an input reaches.
if(SOFTPHONECORE_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "The fuzz targets need clang's libFuzzer")
    endif()
    target_compile_options(SoftphoneCoreCompiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
