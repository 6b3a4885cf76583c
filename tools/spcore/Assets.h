#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <appdata/AssetsDatabase_p.h>
#include <appdata/EndpointData.h>
#include <appdata/ResourcesDefs.h>
#include <array>
#include <optional>
#include <utility>

/// Everything that an assets database holds.
struct Assets
{
    using Pairs = QList<std::pair<QString, QString>>;

    struct FontFile
    {
        QString name;
        bool registered;
    };

    bool versionFits = false;
    DataSets::DataSet record;
    Pairs light;
    Pairs dark;
    Pairs strings;
    std::optional<AssetsDatabase::Fonts> fonts;
    QList<FontFile> fontFiles; ///< filled by registerFonts()
    QList<EndpointData> endpoints;

    /// What the database \a file holds, with the strings of \a language; nothing of what cannot be read.
    static Assets read(QString const& file, ResourcesDefs::RcsLanguage language);

    /// The path of the database in the resource folder \a resources.
    static QString fileIn(QString const& resources);

    /// What a client could not do with these assets, in the words of a support engineer.
    [[nodiscard]] QStringList shortcomings() const;

    /// Registers the fonts, whose files are in the resource folder \a resources.
    void registerFonts(QString const& resources);
};

/// An address in a row of the endpoint table.
struct EndpointUrl
{
    char const* column;
    QString (EndpointData::*get)() const;
};

inline constexpr std::array endpointUrls = {
    EndpointUrl{"WS", &EndpointData::getWs},
    EndpointUrl{"ANALYTICS", &EndpointData::getAnalytics},
    EndpointUrl{"PASSWORD_RESET", &EndpointData::getPasswordReset},
    EndpointUrl{"WHATS_NEW", &EndpointData::getWhatsNew},
    EndpointUrl{"LOCKED_FEATURE_MORE_INFO", &EndpointData::getLockedFeatureModeInfo},
    EndpointUrl{"DISCOVER_MOBILE_OFFER", &EndpointData::getDiscoverMobileOffer},
};
