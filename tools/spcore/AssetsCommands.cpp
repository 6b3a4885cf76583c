#include "Commands.h"
#include "Console.h"

#include <QColor>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlDatabase>
#include <appdata/ApplicationDataHelpers.h>
#include <appdata/AssetsDatabase_p.h>
#include <datasets/JsonDataSet.h>
#include <files/FilePaths.h>

using AssetsDatabase::Fonts;
using ResourcesDefs::RcsLanguage;
using ResourcesDefs::RemoteType;
using Pairs = QList<std::pair<QString, QString>>;

namespace {

struct FontFile
{
    QString name;
    bool registered;
};

/// Everything that an assets database holds.
struct Assets
{
    bool versionFits = false;
    DataSets::DataSet record;
    Pairs light;
    Pairs dark;
    Pairs strings;
    std::optional<Fonts> fonts;
    QList<FontFile> fontFiles;
    QList<EndpointData> endpoints;
};

struct EndpointUrl
{
    char const* column;
    QString (EndpointData::*get)() const;
};

constexpr EndpointUrl endpointUrls[] = {
    {"WS", &EndpointData::getWs},
    {"ANALYTICS", &EndpointData::getAnalytics},
    {"PASSWORD_RESET", &EndpointData::getPasswordReset},
    {"WHATS_NEW", &EndpointData::getWhatsNew},
    {"LOCKED_FEATURE_MORE_INFO", &EndpointData::getLockedFeatureModeInfo},
    {"DISCOVER_MOBILE_OFFER", &EndpointData::getDiscoverMobileOffer},
};

QString environmentName(RemoteType type)
{
    switch (type) {
    case RemoteType::Production:
        return QStringLiteral("production");
    case RemoteType::Staging:
        return QStringLiteral("staging");
    case RemoteType::Development:
        return QStringLiteral("development");
    case RemoteType::None:
        break;
    }
    return QStringLiteral("type %1").arg(static_cast<int>(type));
}

Assets readAssets(QSqlDatabase const& database, RcsLanguage language)
{
    return {
        .versionFits = ApplicationDataHelpers::checkVersion(database),
        .record = AssetsDatabase::applicationRecord(database),
        .light = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchPalette(database, true)),
        .dark = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchPalette(database, false)),
        .strings = AssetsDatabase::textPairs(ApplicationDataHelpers::fetchStrings(database, language)),
        .fonts = AssetsDatabase::fonts(database),
        .fontFiles = {},
        .endpoints = ApplicationDataHelpers::getEndpoints(database),
    };
}

/// What a client could not do with \a assets, in the words of a support engineer.
QStringList shortcomings(Assets const& assets)
{
    std::pair<bool, char const*> const checks[] = {
        {assets.versionFits, "a schema version that fits"},
        {!assets.record.isEmpty(), "the names"},
        {!assets.light.isEmpty() && assets.light.size() == assets.dark.size(), "the palette"},
        {!assets.strings.isEmpty(), "the strings"},
        {assets.fonts.has_value(), "the font"},
        {!assets.endpoints.isEmpty(), "endpoints with one production row"},
    };
    QStringList missing;
    for (auto const& [fine, what] : checks) {
        if (!fine) {
            missing.append(QLatin1String(what));
        }
    }
    return missing;
}

QString text(DataSets::DataSet const& record, QString const& key)
{
    return record.value<QString>(key).value_or(QString());
}

QString swatch(QString const& colour)
{
    QColor const parsed(colour);
    if (!Console::hasColours() || !parsed.isValid()) {
        return QString();
    }
    return QStringLiteral("\x1b[48;2;%1;%2;%3m    \x1b[0m ")
        .arg(QString::number(parsed.red()), QString::number(parsed.green()), QString::number(parsed.blue()));
}

void printHeading(QString const& heading)
{
    Console::print(QString());
    Console::print(Console::bold(heading));
}

void printField(QString const& name, QString const& value)
{
    Console::print(QStringLiteral("  ") + Console::harmless(name).leftJustified(26) + QLatin1Char(' ') +
                   Console::harmless(value));
}

void printPalette(Assets const& assets)
{
    printHeading(QStringLiteral("Palette (light, dark)"));
    for (qsizetype row = 0; row < assets.light.size(); ++row) {
        auto const& [code, light] = assets.light.at(row);
        QString const dark = assets.dark.at(row).second;
        Console::print(QStringLiteral("  ") + Console::harmless(code).leftJustified(26) + QLatin1Char(' ') +
                       swatch(light) + Console::harmless(light).leftJustified(10) + swatch(dark) +
                       Console::harmless(dark));
    }
}

void printText(Assets const& assets, QString const& language)
{
    Console::print(Console::bold(QStringLiteral("Names")));
    printField(QStringLiteral("Application"), text(assets.record, AssetsDatabase::nameKey()));
    printField(QStringLiteral("Manufacturer"), text(assets.record, AssetsDatabase::manufacturerKey()));
    printField(QStringLiteral("Schema version"), QStringLiteral("fits"));
    printPalette(assets);
    printHeading(QStringLiteral("Strings (") + language + QLatin1Char(')'));
    for (auto const& [id, string] : assets.strings) {
        printField(id, string);
    }
    printHeading(QStringLiteral("Fonts"));
    printField(QStringLiteral("Family"), assets.fonts->family);
    for (FontFile const& file : assets.fontFiles) {
        printField(file.name,
                   file.registered ? QStringLiteral("registered") : QStringLiteral("not found, or no font"));
    }
    printHeading(QStringLiteral("Endpoints"));
    for (EndpointData const& endpoint : assets.endpoints) {
        Console::print(QStringLiteral("  ") + environmentName(endpoint.getType()));
        for (EndpointUrl const& url : endpointUrls) {
            printField(QStringLiteral("  ") + QLatin1String(url.column), (endpoint.*url.get)());
        }
    }
    printHeading(QStringLiteral("Application data"));
    Console::print(QStringLiteral("  ") +
                   Console::harmless(JsonDataSet::deserializeJsonData<QString>(assets.record)));
}

/// Rows under the names of their columns; a JSON object would lose their order.
QJsonArray jsonRows(Pairs const& rows, QString const& key, QString const& value)
{
    QJsonArray array;
    for (auto const& [first, second] : rows) {
        array.append(QJsonObject{{key, first}, {value, second}});
    }
    return array;
}

QJsonArray jsonPalette(Assets const& assets)
{
    QJsonArray array;
    for (qsizetype row = 0; row < assets.light.size(); ++row) {
        array.append(QJsonObject{{QStringLiteral("code"), assets.light.at(row).first},
                                 {QStringLiteral("light"), assets.light.at(row).second},
                                 {QStringLiteral("dark"), assets.dark.at(row).second}});
    }
    return array;
}

QJsonObject jsonFonts(Assets const& assets)
{
    QJsonArray files;
    for (FontFile const& file : assets.fontFiles) {
        files.append(QJsonObject{{QStringLiteral("file"), file.name},
                                 {QStringLiteral("registered"), file.registered}});
    }
    return {{QStringLiteral("family"), assets.fonts->family}, {QStringLiteral("files"), files}};
}

QJsonArray jsonEndpoints(Assets const& assets)
{
    QJsonArray array;
    for (EndpointData const& endpoint : assets.endpoints) {
        QJsonObject row{{QStringLiteral("TYPE"), static_cast<int>(endpoint.getType())}};
        for (EndpointUrl const& url : endpointUrls) {
            row.insert(QLatin1String(url.column), (endpoint.*url.get)());
        }
        array.append(row);
    }
    return array;
}

void printJson(Assets const& assets, QString const& language)
{
    QJsonObject record;
    JsonDataSet::deserializeToJson(assets.record, record);
    QJsonObject const document{
        {QStringLiteral("applicationData"), record},
        {QStringLiteral("endpoints"), jsonEndpoints(assets)},
        {QStringLiteral("fonts"), jsonFonts(assets)},
        {QStringLiteral("language"), language},
        {QStringLiteral("palette"), jsonPalette(assets)},
        {QStringLiteral("strings"), jsonRows(assets.strings, QStringLiteral("id"), QStringLiteral("text"))},
        {QStringLiteral("versionFits"), assets.versionFits},
    };
    Console::printBytes(QJsonDocument(document).toJson(QJsonDocument::Indented));
}

ExitCode showAssets(QCommandLineParser const& parser)
{
    QString const language = parser.value(QStringLiteral("language"));
    bool const italian = language == QStringLiteral("italian");
    if (!italian && language != QStringLiteral("english")) {
        Console::printError(QStringLiteral("the language is \"italian\" or \"english\", not \"") + language +
                            QLatin1Char('"'));
        return ExitCode::Usage;
    }
    QString const resources = parser.isSet(QStringLiteral("resources"))
                                  ? parser.value(QStringLiteral("resources"))
                                  : FilePaths::getResourcePath();
    QString const file = FilePaths::buildAbsoluteFilePath(resources, QStringLiteral("assets.db"));
    if (!QFileInfo(file).isFile()) {
        return failed(ExitCode::Failure, QStringLiteral("there is no assets database ") + file);
    }
    Assets assets = AssetsDatabase::readFrom(file, [italian](QSqlDatabase const& database) {
        return readAssets(database, italian ? RcsLanguage::Italian : RcsLanguage::English);
    });
    QStringList const missing = shortcomings(assets);
    if (!missing.isEmpty()) {
        return failed(ExitCode::Failure, QStringLiteral("the assets database ") + file +
                                             QStringLiteral(" lacks ") + missing.join(QStringLiteral(", ")));
    }
    QString const fontsFolder = QDir(resources).filePath(QStringLiteral("assets/fonts"));
    for (QString const& name : assets.fonts->fileNames) {
        assets.fontFiles.append({name, AssetsDatabase::registerFont(fontsFolder, name)});
    }
    if (parser.isSet(QStringLiteral("json"))) {
        printJson(assets, language);
    } else {
        printText(assets, language);
    }
    return ExitCode::Success;
}

} // namespace

QList<Command> assetsCommands()
{
    return {{
        QStringLiteral("assets"),
        QStringLiteral("Shows a client's names, colours, strings, fonts and endpoints"),
        {},
        {
            QCommandLineOption(QStringLiteral("json"),
                               QStringLiteral("Writes everything as one JSON object")),
            QCommandLineOption(QStringLiteral("language"),
                               QStringLiteral("Language of the strings: italian or english (the default)"),
                               QStringLiteral("LANGUAGE"), QStringLiteral("english")),
            QCommandLineOption(
                QStringLiteral("resources"),
                QStringLiteral("Reads the resource folder DIR of a client, not the one beside this command"),
                QStringLiteral("DIR")),
        },
        showAssets,
    }};
}
