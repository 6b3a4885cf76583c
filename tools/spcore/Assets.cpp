#include "Assets.h"

#include <QDir>
#include <QSqlDatabase>
#include <appdata/ApplicationDataHelpers.h>
#include <files/FilePaths.h>

Assets Assets::read(QString const& file, ResourcesDefs::RcsLanguage language)
{
    return AssetsDatabase::readFrom(file, [language](QSqlDatabase const& database) {
        return Assets{
            .versionFits = ApplicationDataHelpers::checkVersion(database),
            .record = AssetsDatabase::applicationRecord(database),
            .light = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchPalette(database, true)),
            .dark = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchPalette(database, false)),
            .strings = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchStrings(database, language)),
            .fonts = AssetsDatabase::fonts(database),
            .fontFiles = {},
            .endpoints = ApplicationDataHelpers::getEndpoints(database),
        };
    });
}

QString Assets::fileIn(QString const& resources)
{
    return FilePaths::buildAbsoluteFilePath(resources, QStringLiteral("assets.db"));
}

QStringList Assets::shortcomings() const
{
    std::pair<bool, char const*> const checks[] = {
        {versionFits, "a schema version that fits"},
        {!record.isEmpty(), "the names"},
        {!light.isEmpty() && light.size() == dark.size(), "the palette"},
        {!strings.isEmpty(), "the strings"},
        {fonts.has_value(), "the font"},
        {!endpoints.isEmpty(), "endpoints with one production row"},
    };
    QStringList missing;
    for (auto const& [fine, what] : checks) {
        if (!fine) {
            missing.append(QLatin1String(what));
        }
    }
    return missing;
}

void Assets::registerFonts(QString const& resources)
{
    QString const folder = QDir(resources).filePath(QStringLiteral("assets/fonts"));
    for (QString const& name : fonts ? fonts->fileNames : QStringList()) {
        fontFiles.append({name, AssetsDatabase::registerFont(folder, name)});
    }
}
