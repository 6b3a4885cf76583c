#pragma once

#include <softphonecore_export.h>

#include <QString>

/// What the text of a URL says about the file it names.
///
/// Any thread. Nothing is looked up: neither disk nor network is touched.
class SOFTPHONECORE_EXPORT UrlHelpers
{
public:
    UrlHelpers() = delete;

    /// The last component of the path of \a url, fully decoded, also of one that is not valid otherwise (see
    /// isValidFile()); empty when the path ends with '/'.
    ///
    /// The name never holds a '/': an encoded one ends the folder like any other. It may be ".." and hold
    /// control characters: FilePaths::safeFileName() makes one of it that can be written to a folder.
    /// Example: getFileName("file:///d/x/a%20b.png") is "a b.png".
    [[nodiscard]] static QString getFileName(QString const& url);

    /// Whether \a url is valid and the last component of its path is not empty; "file:///d/dir/" names no
    /// file.
    [[nodiscard]] static bool isValidFile(QString const& url);
};
