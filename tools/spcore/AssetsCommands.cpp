#include "Assets.h"
#include "Commands.h"
#include "Console.h"
#include "Reason.h"

#include <QColor>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <appdata/AssetsDatabase_p.h>
#include <datasets/JsonDataSet.h>
#include <files/FilePaths.h>

using ResourcesDefs::RcsLanguage;
using ResourcesDefs::RemoteType;
using Pairs = Assets::Pairs;

namespace {

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
    for (Assets::FontFile const& file : assets.fontFiles) {
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
    for (Assets::FontFile const& file : assets.fontFiles) {
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
    Console::printJson(document);
}

ExitCode showAssets(QCommandLineParser const& parser)
{
    QString const language = parser.value(QStringLiteral("language"));
    bool const italian = language == QStringLiteral("italian");
    QString const resources = parser.isSet(QStringLiteral("resources"))
                                  ? parser.value(QStringLiteral("resources"))
                                  : FilePaths::getResourcePath();
    QString const file = Assets::fileIn(resources);
    if (!QFileInfo(file).isFile()) {
        return failed(ExitCode::Failure, QStringLiteral("there is no assets database ") + file);
    }
    if (QString const reason = Reason::notReadable(file); !reason.isEmpty()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot read the assets database ") + file, reason);
    }
    Assets assets = Assets::read(file, italian ? RcsLanguage::Italian : RcsLanguage::English);
    QStringList const missing = assets.shortcomings();
    if (!missing.isEmpty()) {
        return failed(ExitCode::Failure, QStringLiteral("the assets database ") + file +
                                             QStringLiteral(" lacks ") + missing.join(QStringLiteral(", ")));
    }
    assets.registerFonts(resources);
    if (wantsJson(parser)) {
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
            QCommandLineOption(QStringLiteral("language"),
                               QStringLiteral("Language of the strings: italian or english (the default)"),
                               QStringLiteral("LANGUAGE"), QStringLiteral("english")),
            QCommandLineOption(
                QStringLiteral("resources"),
                QStringLiteral("Reads the resource folder DIR of a client, not the one beside this command"),
                QStringLiteral("DIR")),
        },
        showAssets,
        QStringLiteral("{applicationData, endpoints: [...], fonts, language, palette: [...], strings: [...], "
                       "versionFits}"),
        QStringLiteral("assets --resources /Applications/Desk.app/Contents/Resources"),
        {{QStringLiteral("language"), {QStringLiteral("italian"), QStringLiteral("english")}}},
    }};
}
