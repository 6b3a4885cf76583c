#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <functional>

namespace Softphone {

/// The file in the target's folder that a download grows in, held by one download at a time.
///
/// Its name comes from the address, so that the download of the same address after a crash finds it. It is
/// not hidden: what a crash leaves is the user's to see and to delete. Where a call gives false, errno tells
/// why.
class PartFile
{
public:
    PartFile() = default;
    ~PartFile();
    PartFile(PartFile const&) = delete;
    PartFile& operator=(PartFile const&) = delete;

    /// Opens the part file of \a key in \a folder, making it where there is none; another one where it is in
    /// use or somebody else's.
    bool open(QString const& folder, QString const& key);

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] qint64 size() const;

    /// Gives all that the file holds to \a take, block by block.
    bool read(std::function<void(QByteArrayView)> const& take) const;

    bool append(QByteArrayView bytes);
    bool clear();

    /// Gives the file the permissions of \a path, where there is such a file.
    void takePermissionsOf(QString const& path) const;

    /// What is remembered of this part, up to \a most bytes; empty where nothing is, or what lies there is
    /// somebody else's or no plain file.
    [[nodiscard]] QByteArray record(qsizetype most) const;

    /// Where that stands.
    [[nodiscard]] QString recordPath() const { return m_path + QStringLiteral(".tag"); }

    /// Gives the file the name \a path, in place of a file of that name.
    bool replace(QString const& path);

    /// Gives the file the name \a path, unless there is anything of that name (EEXIST).
    bool claim(QString const& path);

    /// Deletes the file.
    void remove();

    /// Leaves the file to whoever opens it next.
    void close();

private:
    bool tryToOpen(QString const& path);

    QString m_path;
    int m_descriptor = -1;
};

} // namespace Softphone
