#pragma once

#include <softphonecore_export.h>

#include <QByteArray>
#include <QImage>
#include <QString>
#include <utility>

/// Pictures between memory and file, for instance those of contacts: encoding, decoding, and the names of a
/// picture and its backup copy.
///
/// PNG, JPEG, GIF, BMP, ICO, PPM (PBM and PGM with it), XBM and XPM are decoded, where the application's Qt
/// reads them, and no other format: what a decoder is asked for has to be known before it starts. A picture
/// is decoded when its bytes explain what it asks for. These are not:
/// - pictures of more than 4 Mi pixels that cannot be in so few bytes: a JPEG holds 512 pixels a byte
///   at most, a GIF 2,730, a PNG 8,256 of one bit each;
/// - a PNG whose data goes on for more than 64 KiB after its last pixel, a GIF that holds more than twice its
///   pixels;
/// - a JPEG whose scans, each over all pixels, come to more than 2^31 pixels, or that has more than 4,096
///   segments.
///
/// Texts in a PNG are left out, and so is a colour profile of more than 4 MiB. A picture therefore takes at
/// most 64 MB plus 16 bytes for each of its pixels, besides the encoded data; Qt's own limit
/// (QImageReader::allocationLimit()) holds as well. Time is linear in the bytes and the pixels.
///
/// Damaged data is reported by the result, and so is a picture for which there is not enough memory. What
/// Qt's readers say about it goes to the logging category "qt.gui.imageio", which the application can switch
/// off; what libpng says of a PNG that it gives up on goes to the standard error stream.
///
/// \code
/// QString file, backup, format;
/// QString const type = QStringLiteral("image/jpeg");
/// if (ImageUtils::buildFilePaths(contactName, type, path, file, backup, format)) {
///     ImageUtils::removeFile(backup);
///     ImageUtils::renameFile(file, backup);
///     ImageUtils::saveImageFromByteArray(text, format, file);
/// }
/// \endcode
///
/// Any thread.
class SOFTPHONECORE_EXPORT ImageUtils
{
public:
    ImageUtils() = delete;

    /// Decodes the picture in \a data.
    ///
    /// \param data    the encoded picture
    /// \param format  name of the format that the data is taken for, such as "png"; when this is empty or no
    ///                format that Qt knows, the data itself decides
    /// \return the picture, or a null one when \a data cannot be decoded
    [[nodiscard]] static QImage convertByteArray2Image(QByteArray const& data, QString const& format);

    /// Encodes \a image at the default quality.
    ///
    /// \param image   the picture
    /// \param format  name of the format, in any case; of the accepted formats, Qt writes all but "gif"
    /// \return the encoded picture, or empty when the format is not written or \a image is null
    [[nodiscard]] static QByteArray convertImage2ByteArray(QImage const& image, QString const& format);

    /// Loads the picture file \a path and encodes it again in the format of the file's suffix.
    ///
    /// \return the encoded picture (not the bytes of the file) and the suffix as it is spelt in \a path; both
    ///         empty when \a path is empty, is no file with a picture or has no suffix; only the bytes are
    ///         empty when the picture cannot be written in that format
    [[nodiscard]] static std::pair<QByteArray, QString> getByteArrayFromPath(QString const& path);

    /// What follows the last dot of the name of \a path, if there is such a file; else empty.
    [[nodiscard]] static QString getFileFormat(QString const& path);

    /// Decodes \a data as convertByteArray2Image() does with \a format, and saves the picture as \a path in
    /// the format of the suffix of \a path.
    ///
    /// A file that is there already is replaced, and only once the new one is complete.
    /// \return whether the file was written; after false what was there is unchanged
    static bool saveImageFromByteArray(QByteArray const& data, QString const& format, QString const& path);

    /// Removes the file \a path.
    ///
    /// \return whether there is no such file now
    static bool removeFile(QString const& path);

    /// Renames the file \a src to \a dst; what is there already is never replaced, unlike by
    /// FilePaths::renameFile().
    ///
    /// \return whether the file was renamed; false when there is no \a src or something is named \a dst
    static bool renameFile(QString const& src, QString const& dst);

    /// Whether \a format is one of the picture formats that the client exchanges: "png", "jpg", "jpeg" and
    /// "gif", in lower case.
    [[nodiscard]] static bool isFormatValid(QString const& format);

    /// Names the file of a picture and of its backup copy: "avatar.jpeg" and "avatar_bk.jpeg".
    ///
    /// \param baseName    name of the picture without a suffix
    /// \param mimeType    the format is its second part ("image/jpeg" gives "jpeg"); "png" when it has none
    /// \param folder      the folder of both paths; nothing is looked up or made there
    /// \param path        receives the path of the picture
    /// \param backupPath  receives the path of its backup copy
    /// \param format      receives the format, after a failure as well
    /// \return whether the format is accepted (see isFormatValid()); after false both paths are untouched
    static bool buildFilePaths(QString const& baseName, QString const& mimeType, QString const& folder,
                               QString& path, QString& backupPath, QString& format);
};
