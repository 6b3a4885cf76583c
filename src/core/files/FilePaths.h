#pragma once

#include <softphonecore_export.h>

#include <QString>
#include <vector>

class QByteArray;
class QDir;

/// The client's own places, and the names of its files: where the application, its resources and the
/// user's data live, how paths are put together, which folders are made on the way, and what is done with
/// the files themselves.
///
/// Paths are written with '/'. Most answers about a path are those of Qt's file classes; a path that no
/// file can have (an empty one, or one with an embedded NUL) names nothing that exists.
///
/// Failures are results: false, -1 or an empty text. Nothing is logged.
///
/// \code
/// QString copy = FilePaths::buildDataPath(QStringLiteral("greeting.wav"));
/// if (FilePaths::copyFile(path, copy)) {
///     show(copy); // it ends in "greeting(1).wav" when the first name was taken
/// }
/// \endcode
///
/// Any thread. All functions block on the file system.
class SOFTPHONECORE_EXPORT FilePaths
{
public:
    FilePaths() = delete;

    // The application and its bundle.

    /// The folder of the application's executable.
    ///
    /// Before the application object is made, and after it is gone, it is the folder of the running
    /// executable all the same.
    [[nodiscard]] static QString getAppPath();

    /// The file name of the application's executable, in lower case.
    [[nodiscard]] static QString getAppFilename();

    /// The bundle's resource folder: "Resources" beside the application's folder.
    ///
    /// Where there is no such folder, the folder above the application's.
    [[nodiscard]] static QString getResourcePath();

    /// The folder "assets" inside the resource folder, with a '/' at the end; the resource folder (with a
    /// '/') where there is none.
    [[nodiscard]] static QString getAssetsPath();

    /// The path of the application's icon "appIcon.png" in the resource folder, whether or not it exists.
    [[nodiscard]] static QString getAppIconPath();

    // The user's folders. Each is made when it is missing.

    /// The user's folder for this application's data; empty when it cannot be made. Other users have no
    /// access to one that is made here; one that is there keeps its mode.
    static QString buildDataDir();

    /// The user's folder for this application's data that stay on this machine, made like buildDataDir();
    /// empty when it cannot be made.
    static QString buildLocalDataDir();

    /// The application's own folder for temporary files: the organisation's and the application's name as
    /// levels below the system's temporary folder.
    ///
    /// A name that is not set gives no level. On Linux, where all users share the system's temporary folder,
    /// every level is this user's alone (0700). A level that belongs to another user, is a link or may be
    /// written to by others is not used: the same levels below the user's runtime folder ($XDG_RUNTIME_DIR)
    /// take its place, or else below the user's cache folder.
    /// \return the folder's path, or empty when it cannot be made
    static QString buildTempPath();

    /// The absolute path of \a name in the folder buildDataDir() gives; empty when that folder cannot be
    /// made.
    static QString buildDataPath(QString const& name);

    /// The absolute path of \a name in the folder buildLocalDataDir() gives; empty when that folder cannot
    /// be made.
    static QString buildLocalDataPath(QString const& name);

    /// Makes the folder \a path level by level, as createFoldersIteratively() does.
    ///
    /// \return whether the folder exists now
    static bool buildDir(QString const& path);

    /// The same as buildDir() for \a path, under the name that reads better where the folder often exists.
    ///
    /// \return whether the folder exists now
    static bool createDirIfNeeded(QString const& path);

    /// Makes the folder \a path with all folders above it; a relative path is below the current folder.
    ///
    /// Unlike createFoldersIteratively() it makes the first level too.
    /// \return whether the folder exists now
    static bool createSubdir(QString const& path);

    /// Makes the missing folders of the absolute \a path, one level after the other.
    ///
    /// The first level is taken as existing: it is neither tested nor made, and a path with no second one
    /// ("/tmp", "") is refused, so that nothing is ever made directly below the root. A path that does not
    /// start with '/' is read as if it did.
    /// \return whether every level exists now; after false, levels made so far stay
    static bool createFoldersIteratively(QString const& path);

    // Putting paths together.

    /// The name part of \a path, everything after the last '/'.
    ///
    /// With \a unique, a name that is taken gets a number: "report.pdf" becomes "report(1).pdf", then
    /// "report(2).pdf". The part between the first and the last dot is dropped ("archive.tar.gz" becomes
    /// "archive(1).gz") and a name without suffix gets a dot at the end ("notes(1)."). Whether a name is
    /// taken is looked up in the process's current folder, not in the folder of \a path: copyFile() is what
    /// finds a free name in a given folder. A name from outside can mean something else to a file
    /// system ("..", control characters): safeFileName() gives one that does not.
    [[nodiscard]] static QString getFileName(QString const& path, bool unique);

    /// A name that can be written to any folder and means nothing but a file there, made of \a name: for
    /// names that come from outside, such as those in addresses, messages and headers.
    ///
    /// - Both slashes, colons, stars, question marks, quotes, angle brackets, bars, controls, halves of
    ///   characters, and what turns the direction of text become '_', one each. A path stays one name:
    ///   "../a" gives ".._a".
    /// - Dots and blanks at the end are dropped.
    /// - The name of a device on some system ("NUL", "com1.txt") gets a '_' in front.
    /// - What is longer than 255 bytes in UTF-8 is cut before the last dot, between characters; the
    ///   suffix stays, unless it leaves no room for anything else.
    /// - Where nothing is left it is "_"; so it is neither empty nor "." nor "..".
    ///
    /// A name that is safe already comes back as it is. It may be hidden (a leading dot is kept), and it may
    /// be taken: copyFile() finds a free one. Linear in \a name.
    [[nodiscard]] static QString safeFileName(QString const& name);

    /// The absolute path in the folder \a dir of the name that getFileName() gives for \a file and \a unique.
    ///
    /// No folder is made. Example: buildAbsoluteFilePath("/d", "x/a.txt") is "/d/a.txt".
    [[nodiscard]] static QString buildAbsoluteFilePath(QString const& dir, QString const& file,
                                                       bool unique = false);

    /// The same for the folder \a subdir of \a dir, both made when they are missing (see
    /// buildAbsoluteDirPath()), with the name that getFileName() gives for \a file and \a unique.
    ///
    /// \return the path, or empty when the folder cannot be made
    static QString buildAbsoluteFilePath(QString const& dir, QString const& subdir, QString const& file,
                                         bool unique);

    /// Not callable: a literal as third argument would silently be the truth value, not the file's name.
    static QString buildAbsoluteFilePath(QString const& dir, QString const& file,
                                         char const* unique) = delete;

    /// Not callable: nor is a pointer to any other kind of character a truth value.
    template <typename Character>
    static QString buildAbsoluteFilePath(QString const& dir, QString const& file,
                                         Character const* unique) = delete;

    /// The path of the folder \a subdir in \a dir. Both are made when they are missing: \a dir as
    /// createFoldersIteratively() does it (so not on the first level), \a subdir with all its levels.
    ///
    /// \a dir is meant to be absolute: a relative one is made below the root, but the path that comes back,
    /// and \a subdir with it, is below the current folder.
    /// \return the path, or empty when one of them cannot be made
    static QString buildAbsoluteDirPath(QString const& dir, QString const& subdir);

    /// The absolute path of \a file in the folder \a dir; \a file itself when it is absolute. Nothing is
    /// made.
    [[nodiscard]] static QString absoluteFilePath(QString const& dir, QString const& file);

    /// The absolute path of the folder \a subdir in \a dir; \a subdir itself when it is absolute. Nothing is
    /// made.
    [[nodiscard]] static QString absoluteDirPath(QString const& dir, QString const& subdir);

    /// The path of \a file in the folder \a dir, relative when \a dir is.
    [[nodiscard]] static QString buildRelativeFilePath(QString const& dir, QString const& file);

    /// The absolute path of the file or folder \a path when it exists as it stands, relative to the current
    /// folder; otherwise the path of \a path in the application's folder.
    [[nodiscard]] static QString getAbsoluteFilePath(QString const& path);

    /// The absolute folder that contains the local file \a pathOrUrl, a path or a "file:" URL as a user
    /// types them; relative paths are below the current folder. Empty when it is no local file.
    [[nodiscard]] static QString getAbsolutePath(QString const& pathOrUrl);

    /// The path of the first file named \a file that recursiveCheckFile() finds in \a folder or below it;
    /// empty when there is none.
    [[nodiscard]] static QString getFilePathInSubfolder(QString const& folder, QString const& file);

    /// The last folder name of \a path, a '/' at its end or not.
    [[nodiscard]] static QString getFolderNameFromFolderPath(QString const& path);

    /// The whole path of \a url, fully decoded; \a url is read as a user types it.
    ///
    /// Despite the name it is not reduced to the file's name: callers cut it themselves.
    /// Example: getFileNameFromUrl("http://host.example/a%20b/c.txt?q=1") is "/a b/c.txt".
    [[nodiscard]] static QString getFileNameFromUrl(QString const& url);

    /// Whether there is anything of the name \a path, a file or a folder.
    [[nodiscard]] static bool fileExists(QString const& path);

    /// Whether there is a folder \a path.
    [[nodiscard]] static bool dirExists(QString const& path);

    /// Whether \a path is a folder, or a link to one.
    [[nodiscard]] static bool isDirectory(QString const& path);

    /// The size of the file \a path in bytes; -1 when there is none.
    [[nodiscard]] static qint64 getFileSize(QString const& path);

    /// What follows the last dot in the name part of \a path; empty when there is no dot.
    [[nodiscard]] static QString getFileExtension(QString const& path);

    /// Whether \a path starts with "//", as the path of a shared folder on the network does.
    [[nodiscard]] static bool isNetworkPath(QString const& path);

    /// \a path with "file://" before it, unless it starts with that already.
    [[nodiscard]] static QString prependFileProtocolToPath(QString const& path);

    /// \a path with \a prefix before its name part.
    ///
    /// Example: prependStringToFilename("/a/b/c.txt", "x_") is "/a/b/x_c.txt". The folder of a bare name is
    /// ".".
    [[nodiscard]] static QString prependStringToFilename(QString const& path, QString const& prefix);

    /// \a path without \a prefix at the start of its name part; \a path unchanged when the name does not
    /// start so.
    [[nodiscard]] static QString removePrefixFromFilename(QString const& path, QString const& prefix);

    /// \a path with "-" and \a suffix before the first dot of its name part.
    ///
    /// Example: appendSuffix("/d/photo.tar.gz", "bk") is "/d/photo-bk.tar.gz".
    /// \return the new path, or empty when the name has no suffix
    [[nodiscard]] static QString appendSuffix(QString const& path, QString const& suffix);

    /// \a path without the last occurrence of '/' followed by \a subfolder, wherever it stands; unchanged
    /// when there is none.
    [[nodiscard]] static QString cleanFromSubFolder(QString path, QString const& subfolder);

    /// Looks for a file named exactly \a name (case-sensitive) in the folder \a dir and below it.
    ///
    /// A folder's entries are taken by name, its subfolders before its files, so that a file in a subfolder
    /// is found before one in \a dir itself. Hidden entries are passed over. Links to folders are followed;
    /// no folder is visited twice, so that a link back up ends the walk there. The time grows with the number
    /// of entries.
    /// \return the absolute path of the first such file; empty when there is none
    [[nodiscard]] static QString recursiveCheckFile(QDir dir, QString const& name);

    // The files themselves.

    /// Sets the times of last access and last modification of the file \a path to now, in whole seconds.
    ///
    /// Despite the name the time of creation stays as it is: the client counts a file's age from its last
    /// modification.
    /// \return whether the times were set
    static bool setFileBirthTimeToNow(QString const& path);

    // Creating, copying, renaming and removing. A link is removed or renamed as itself; what it leads to
    // stays.

    /// Removes the file \a path; of a link, the link.
    ///
    /// \return whether there is no such file now; a missing one is a success
    static bool removeFile(QString const& path);

    /// Makes the file \a path, empty; one that is there is emptied. A pipe is refused, it would make the
    /// caller wait.
    ///
    /// \return whether it could be opened for writing
    static bool createFile(QString const& path);

    /// Writes \a data as the file \a path so that at any moment, a crash or a full disk included, \a path
    /// holds either what it held before or all of \a data.
    ///
    /// The data goes to a temporary file in the same folder (named after \a path, with six more characters),
    /// which takes the name last; only a process killed on the way leaves it behind. The permissions of a
    /// file that is there are kept, and a link is followed: the file that it leads to is written. The folder
    /// must be writable. A folder, device or pipe in place of the file is refused.
    ///
    /// \return \a path, or empty when the file could not be written
    static QString createBinaryDataFile(QString const& path, QByteArray const& data);

    /// Copies the file \a src to \a dst, or to the first free name after it, and sets the copy's times to now
    /// (see setFileBirthTimeToNow()), so that it counts as new for removeOldFiles().
    ///
    /// Names count up from the requested one: "a.txt", "a(1).txt", "a(2).txt"; of a name with several dots
    /// the first part and the last are kept. Nothing is ever overwritten, also when several callers want the
    /// same name at once: each gets one of its own. The copy takes its name when it is complete. One look-up
    /// for each name that is taken.
    ///
    /// \param src  a file, or a link to one, also among the application's resources; a device or pipe is
    ///             refused
    /// \param dst  the wanted path; receives the one used, after a failure the last one tried
    /// \return whether the file was copied
    static bool copyFile(QString const& src, QString& dst);

    /// The same as copyFile(), with \a src removed afterwards; \a dst is treated as there.
    ///
    /// \return whether the file was copied and \a src is gone; after false the copy may exist as \a dst
    static bool moveFile(QString const& src, QString& dst);

    /// Copies \a src under the name that appendSuffix() gives for \a suffix, or the first free one after it.
    ///
    /// \return whether the file was copied; false for a name without a suffix, as appendSuffix() has no name
    ///         for it
    static bool createFileCopyInSameFolder(QString const& src, QString const& suffix);

    /// Renames the file \a src to \a dst, in place of a file that is there.
    ///
    /// The old \a dst is there until the new one takes its place. When both name the same file (spelt in
    /// two ways, or through a link), nothing is done. Between file systems the file is copied first.
    /// A folder \a src is renamed as well, on the same file system and where nothing is named \a dst.
    ///
    /// \return whether \a dst is now what \a src was; false when there is no \a src or \a dst is a folder
    static bool renameFile(QString const& src, QString const& dst);

    /// Renames the folder \a src to \a name inside the folder \a destDir, on the same file system.
    ///
    /// \param name  the new name, or a relative path to it through folders that are there
    /// \return whether it was renamed; false when something of that name is there already, or \a name is
    ///         absolute or goes up a level ("..")
    static bool moveFolder(QString const& src, QString const& destDir, QString const& name);

    /// Removes the folder \a path with all that it holds, hidden entries included.
    ///
    /// No link is followed: a link inside, and \a path itself when it is one to a folder, is removed, and
    /// what it leads to stays. Any depth of folders will do.
    ///
    /// \return whether there is no such folder now; after false, what could be removed is gone
    static bool removeFolder(QString const& path);

    /// Empties the folder \a path: removes it as removeFolder() does and makes it again, with the mode that
    /// it had.
    ///
    /// \return whether it was made again; false when there is no such folder
    static bool cleanFolder(QString const& path);

    /// Removes the files of \a folder that were last modified \a days times 24 hours ago or earlier, hidden
    /// ones included.
    ///
    /// Ages are counted in whole hours: after 23 hours and 59 minutes a file is 23 hours old. A file dated in
    /// the future is kept, whatever \a days is. Links are not followed: one inside counts by its own time and
    /// only it is removed, and nothing is done when \a folder is one. Folders, devices and pipes stay. What
    /// cannot be removed stays, and nothing reports it.
    ///
    /// \param folder     the folder
    /// \param days       0 removes every file that is not dated in the future
    /// \param recursive  whether subfolders are pruned as well; they stay when they become empty
    static void removeOldFiles(QString const& folder, int days, bool recursive);

    // Files by name. A complete base name is all before the last dot, hidden files count, case matters.

    /// What follows the last dot in the name part of \a name; empty when there is no dot.
    [[nodiscard]] static QString getExtensionFromFileName(QString const& name);

    /// The absolute path of the last modified file in \a folder whose complete base name is \a baseName, of
    /// several equally new the first by name; empty when there is none.
    [[nodiscard]] static QString getFileByBaseName(QString const& folder, QString const& baseName);

    /// Removes every file in \a folder whose complete base name is \a baseName.
    static void removeAllFilesByBaseName(QString const& folder, QString const& baseName);

    /// Removes every file in \a folder that differs from \a keepFile, a path or a bare name, in the suffix
    /// alone.
    static void removeOtherFilesByBaseName(QString const& folder, QString const& keepFile);

    /// Removes every file in \a folder whose name has exactly \a extension after its first dot; "gz" leaves
    /// "a.tar.gz" alone.
    static void removeExtensionFilesFromFolder(QString const& folder, QString const& extension);

    /// The path in the user's folder for downloads of the name that getFileName() makes unique for
    /// \a fileName.
    ///
    /// A name from outside goes through safeFileName() first: ":x" and ".." mean something else to a file
    /// system.
    [[nodiscard]] static QString buildDownloadFilePath(QString const& fileName);

    // Text files.

    /// Writes \a content to the file \a path as UTF-8, in place of what it held.
    ///
    /// \return whether the file could be opened; what becomes of the text after that, on a full disk for
    ///         instance, does not show here (createBinaryDataFile() tells)
    static bool writeFileContent(QString const& path, QString const& content);

    /// Reads the text file \a path, if it is one that the caller accepts.
    ///
    /// The text is UTF-8, or UTF-16 or UTF-32 with a byte order mark; carriage returns are dropped. What is
    /// not a file (a device, a pipe) is not opened.
    /// \param path      the file
    /// \param mimeType  the type that the file's name and content must have, or inherit from
    /// \param suffixes  the accepted suffixes, in lower case
    /// \param maxSize   greatest size in bytes; a file that grows beyond it while it is read is rejected
    /// \param suffix    receives the file's suffix in lower case when that is accepted, whatever becomes of
    ///                  the file after; else untouched
    /// \return the whole text; empty for an empty file and for one that is rejected or cannot be read
    [[nodiscard]] static QString readFileContent(QString const& path, QString const& mimeType,
                                                 std::vector<QString> const& suffixes, unsigned int maxSize,
                                                 QString& suffix);

    // Other names for a file.

    /// The bare name of \a path with "_" and \a text before its first dot, followed by "." and \a extension
    /// unless that is empty or the file's suffix already.
    ///
    /// Examples: appendToFileName("/d/rec.wav", "2", "") is "rec_2.wav", with "mp3" it is "rec_2.wav.mp3". A
    /// name without a suffix gets a dot at its end: "notes" gives "notes_2.".
    [[nodiscard]] static QString appendToFileName(QString const& path, QString const& text,
                                                  QString const& extension);

    /// \a path with \a extension, one leading dot of it left out, in place of what follows the last dot of
    /// its name; a folder's path unchanged.
    ///
    /// Example: changeFileExtension("/d/a.wav", ".mp3") is "/d/a.mp3".
    [[nodiscard]] static QString changeFileExtension(QString const& path, QString const& extension);

    /// \a text as a "file:" URL if, read as a user types it, it is a local file that exists; else \a text.
    ///
    /// The path follows "file:///" with its own slash, or "file:" alone when \a text starts with "//":
    /// "/tmp/a" gives "file:////tmp/a". The views that show these links rely on the extra slash.
    [[nodiscard]] static QString handleFileScheme(QString const& text);

    /// The name of the MIME type that the name and, where that leaves a choice, the content of the file
    /// \a path have; "application/octet-stream" when nothing is known.
    [[nodiscard]] static QString getFileMimeType(QString const& path);

    /// Whether \a a and \a b are the same absolute path once "." and ".." are worked out in the text; links
    /// are not looked at, and case matters.
    [[nodiscard]] static bool areSameFilePath(QString const& a, QString const& b);

    /// Shows the file \a path in the desktop's file manager.
    ///
    /// Starts another process for it and returns; whether the file is shown then is not reported.
    static void showFileInFolder(QString const& path);
};
