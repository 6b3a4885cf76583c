#pragma once

#include <QByteArray>
#include <QStringList>
#include <curl/curl.h>
#include <functional>
#include <optional>

/// Stands between the library and libcurl: a test that links CurlSeam.cpp sees each call, and can answer
/// some in libcurl's place.
///
/// The functions of libcurl that the library calls are defined once more in the test's
/// program, where the dynamic linker finds them first. One state for the process; changed only while no
/// transfer runs.
struct CurlSeam
{
    /// A call of curl_easy_setopt.
    struct Option
    {
        CURLoption id = CURLOPT_LASTENTRY;
        QString text;            ///< "URL=http://..." as names and values go; "WRITEFUNCTION" for pointers
        void* pointer = nullptr; ///< the value of an option that takes a data pointer
    };

    /// \name What was seen
    /// @{
    QList<Option> options;
    QStringList headers; ///< of the list set last
    int handles = 0;     ///< opened by the library and not closed
    int lists = 0;       ///< header lists made and not freed
    int performed = 0;
    long seenResponseCode = -1; ///< what libcurl answered last
    QList<long> globalInits;
    int globalCleanups = 0;
    /// @}

    /// \name What is answered instead
    /// @{
    bool failInit = false;
    std::optional<CURLoption> failOption;     ///< fails with CURLE_OUT_OF_MEMORY
    std::optional<int> failAppend;            ///< the call of curl_slist_append, from 0, that gives null
    std::optional<CURLcode> result;           ///< of the transfer, which is not run
    long responseCode = 0;                    ///< with \a result
    std::function<void(CurlSeam&)> onPerform; ///< runs before \a result is given
    QByteArray trusted;                       ///< file with the only certificates that are trusted
    /// @}

    [[nodiscard]] QStringList optionTexts() const;
    [[nodiscard]] void* pointer(CURLoption id) const;

    static CurlSeam& instance();
    static void reset();
};
