#include "ApplicationDataHelpers.h"

#include "AssetsDatabase_p.h"

#include <QCoreApplication>
#include <QSqlError>
#include <QSqlRecord>
#include <QVariant>
#include <algorithm>
#include <array>
#include <files/FilePaths.h>
#include <utility>

using ResourcesDefs::RcsLanguage;
using ResourcesDefs::RemoteType;

namespace {

constexpr int schemaVersion = 12;

struct UrlColumn
{
    char const* name;
    void (EndpointData::*set)(QString const& url);
};

constexpr std::array urlColumns{
    UrlColumn{"WS", &EndpointData::setWs},
    UrlColumn{"ANALYTICS", &EndpointData::setAnalytics},
    UrlColumn{"PASSWORD_RESET", &EndpointData::setPasswordReset},
    UrlColumn{"WHATS_NEW", &EndpointData::setWhatsNew},
    UrlColumn{"LOCKED_FEATURE_MORE_INFO", &EndpointData::setLocketFeautreModeInfo},
    UrlColumn{"DISCOVER_MOBILE_OFFER", &EndpointData::setDiscoverMobileOffer},
};

RemoteType remoteType(QVariant const& value)
{
    qint64 const number = value.toLongLong();
    // Cut down to 32 bits, a number out of range could pass for the production environment.
    return std::in_range<int>(number) ? static_cast<RemoteType>(number) : RemoteType::None;
}

bool setName(QSqlDatabase const& database, QString const& statement, void (*set)(QString const& name))
{
    QString const name = AssetsDatabase::firstValue(database, statement).toString();
    if (name.isEmpty()) {
        return false;
    }
    set(name);
    return true;
}

} // namespace

QSqlDatabase ApplicationDataHelpers::getDBConnection()
{
    return AssetsDatabase::addConnection(AssetsDatabase::applicationFile());
}

bool ApplicationDataHelpers::checkVersion(QSqlDatabase const& database)
{
    QVariant const version =
        AssetsDatabase::firstValue(database, QStringLiteral("SELECT version FROM tbl_VERSION;"));
    return version.toLongLong() == schemaVersion;
}

bool ApplicationDataHelpers::setManufacturer(QSqlDatabase const& database)
{
    return setName(database, QStringLiteral("SELECT Manufacturer FROM tbl_NAMES;"),
                   QCoreApplication::setOrganizationName);
}

bool ApplicationDataHelpers::setApplicationName(QSqlDatabase const& database)
{
    return setName(database, QStringLiteral("SELECT Name FROM tbl_NAMES;"),
                   QCoreApplication::setApplicationName);
}

QSqlQuery ApplicationDataHelpers::fetchPalette(QSqlDatabase const& database, bool light)
{
    return AssetsDatabase::prepare(database, light ? QStringLiteral("SELECT Code, Light FROM tbl_PALETTE;")
                                                   : QStringLiteral("SELECT Code, Dark FROM tbl_PALETTE;"));
}

QList<std::pair<QString, QString>> ApplicationDataHelpers::getColorsPalette(bool light)
{
    return AssetsDatabase::readFrom(AssetsDatabase::applicationFile(), [light](QSqlDatabase const& database) {
        return AssetsDatabase::textPairs(fetchPalette(database, light));
    });
}

QSqlQuery ApplicationDataHelpers::fetchStrings(QSqlDatabase const& database, RcsLanguage language)
{
    return AssetsDatabase::prepare(database, language == RcsLanguage::Italian
                                                 ? QStringLiteral("SELECT Id, Italian FROM tbl_STRINGS;")
                                                 : QStringLiteral("SELECT Id, English FROM tbl_STRINGS;"));
}

QList<std::pair<QString, QString>> ApplicationDataHelpers::getStringsLanguage(RcsLanguage language)
{
    return AssetsDatabase::readFrom(AssetsDatabase::applicationFile(),
                                    [language](QSqlDatabase const& database) {
                                        return AssetsDatabase::textPairs(fetchStrings(database, language));
                                    });
}

QString ApplicationDataHelpers::getFontFamily()
{
    auto const row = AssetsDatabase::readFrom(AssetsDatabase::applicationFile(), AssetsDatabase::fonts);
    if (!row) {
        return QString();
    }
    QString const folder =
        FilePaths::buildAbsoluteDirPath(FilePaths::getAssetsPath(), QStringLiteral("fonts"));
    for (QString const& fileName : row->fileNames) {
        AssetsDatabase::registerFont(folder, fileName);
    }
    return row->family;
}

std::optional<EndpointData> ApplicationDataHelpers::buildEndPointData(QSqlQuery const& query)
{
    QSqlRecord const row = AssetsDatabase::currentRow(query);
    QVariant const type = row.value(QStringLiteral("TYPE"));
    if (!type.isValid()) {
        return std::nullopt;
    }
    EndpointData endpoint;
    endpoint.setType(remoteType(type));
    for (UrlColumn const& column : urlColumns) {
        QVariant const url = row.value(QLatin1String(column.name));
        if (!url.isValid()) {
            return std::nullopt;
        }
        (endpoint.*column.set)(url.toString());
    }
    return endpoint;
}

QList<EndpointData> ApplicationDataHelpers::getEndpoints(QSqlDatabase const& database)
{
    QSqlQuery query = AssetsDatabase::prepare(database, QStringLiteral("SELECT * FROM tbl_ENDPOINTS;"));
    query.setForwardOnly(true);
    if (!query.exec()) {
        return {};
    }
    QList<EndpointData> endpoints;
    while (query.next()) {
        std::optional<EndpointData> const endpoint = buildEndPointData(query);
        if (!endpoint) {
            return {};
        }
        endpoints.append(*endpoint);
    }
    bool const valid = !query.lastError().isValid() &&
                       std::count_if(endpoints.cbegin(), endpoints.cend(),
                                     [](EndpointData const& row) { return row.isProduction(); }) == 1;
    return valid ? endpoints : QList<EndpointData>();
}
