#include "AssetsBundle.h"

#include <QDir>
#include <QDirIterator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>
#include <QUuid>

AssetsBundle::AssetsBundle(QString const& programFolder)
    : m_folder(QFileInfo(programFolder).path() + QStringLiteral("/Resources"))
{
    QDir(m_folder).removeRecursively();
    QDir().mkpath(m_folder);
}

AssetsBundle::~AssetsBundle()
{
    QDir(m_folder).removeRecursively();
}

QString AssetsBundle::path(QString const& name) const
{
    return QDir(m_folder).filePath(name);
}

QString AssetsBundle::database() const
{
    return path(QStringLiteral("assets.db"));
}

void AssetsBundle::write(QString const& name, QByteArray const& content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QMap<QString, QByteArray> AssetsBundle::content() const
{
    QMap<QString, QByteArray> content;
    QDirIterator walk(m_folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        bool const readable = walk.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
        content.insert(walk.filePath(), readable ? file.readAll() : QByteArray());
    }
    return content;
}

void AssetsBundle::makeDatabase(QString const& file, QStringList const& statements)
{
    QString const name = QUuid::createUuid().toString();
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(file);
        QVERIFY(database.open());
        for (QString const& statement : statements) {
            QSqlQuery query(database);
            QVERIFY2(query.exec(statement), qPrintable(statement + query.lastError().text()));
        }
        database.close();
    }
    QSqlDatabase::removeDatabase(name);
}

QStringList AssetsBundle::validStatements()
{
    return {
        QStringLiteral("CREATE TABLE tbl_VERSION (version INTEGER)"),
        QStringLiteral("INSERT INTO tbl_VERSION VALUES (12)"),
        QStringLiteral("CREATE TABLE tbl_NAMES (Name TEXT, Manufacturer TEXT)"),
        QStringLiteral("INSERT INTO tbl_NAMES VALUES ('Client %1', 'Maker %2')"),
        QStringLiteral("CREATE TABLE tbl_PALETTE (Code TEXT, Light TEXT, Dark TEXT)"),
        QStringLiteral("INSERT INTO tbl_PALETTE VALUES ('text', '#000000', '#ffffff'), ('page', '#fefefe', "
                       "'#101010'), ('accent', '#0a7', NULL)"),
        QStringLiteral("CREATE TABLE tbl_STRINGS (Id TEXT, Italian TEXT, English TEXT)"),
        QStringLiteral(
            "INSERT INTO tbl_STRINGS VALUES ('call', 'Chiama', 'Call'), ('why', 'Perché?', 'Why?'), "
            "('none', NULL, '')"),
        QStringLiteral("CREATE TABLE tbl_FONTS (Family TEXT, Light TEXT, Regular TEXT, Medium TEXT)"),
        QStringLiteral("INSERT INTO tbl_FONTS VALUES ('Family %1', 'light.ttf', 'regular.ttf', NULL)"),
        QStringLiteral(
            "CREATE TABLE tbl_ENDPOINTS (TYPE INTEGER, WS TEXT, ANALYTICS TEXT, PASSWORD_RESET TEXT, "
            "WHATS_NEW TEXT, LOCKED_FEATURE_MORE_INFO TEXT, DISCOVER_MOBILE_OFFER TEXT)"),
        QStringLiteral("INSERT INTO tbl_ENDPOINTS VALUES (1, 'ws1', 'an1', 'pr1', 'wn1', 'lf1', 'dm1'), "
                       "(0, 'ws0', 'an0', 'pr0', 'wn0', 'lf0', 'dm0')"),
    };
}
