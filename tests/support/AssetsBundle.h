#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

/// The folder "Resources" beside the folder of the test's executable, for a test that is alone in its bundle.
/// It starts empty and goes with this object.
class AssetsBundle
{
public:
    /// \a programFolder is the folder of the test's executable.
    explicit AssetsBundle(QString const& programFolder);
    ~AssetsBundle();
    AssetsBundle(AssetsBundle const&) = delete;
    AssetsBundle& operator=(AssetsBundle const&) = delete;

    /// The path of \a name in the folder; the folder's own for an empty name.
    [[nodiscard]] QString path(QString const& name = QString()) const;
    /// The path of the assets database.
    [[nodiscard]] QString database() const;
    /// Writes \a content to the file \a name, making its folders.
    void write(QString const& name, QByteArray const& content) const;
    /// Everything in the folder: a file's content under its path, nothing under that of a folder.
    [[nodiscard]] QMap<QString, QByteArray> content() const;

    /// Makes the database \a file by running \a statements; fails the running test when one cannot be run.
    static void makeDatabase(QString const& file, QStringList const& statements);
    /// Statements that make a small valid database.
    static QStringList validStatements();

private:
    QString m_folder;
};
