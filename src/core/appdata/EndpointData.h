#pragma once

#include "ResourcesDefs.h"

#include <softphonecore_export.h>

#include <QString>
#include <cstddef>
#include <functional>

class QDebug;

/// One row of the endpoint table of the assets database: a remote environment and the addresses of its
/// services.
///
/// A plain value; any number of threads may read one.
///
/// \code
/// EndpointData endpoint;
/// endpoint.setType(ResourcesDefs::RemoteType::Production);
/// endpoint.setWs(QStringLiteral("wss://host.example"));
/// endpoint.isProduction(); // true
/// \endcode
class SOFTPHONECORE_EXPORT EndpointData
{
public:
    /// A record of no environment (ResourcesDefs::RemoteType::None), all of whose addresses are null.
    EndpointData();

    /// Whether this is the production environment, whatever the addresses hold.
    [[nodiscard]] bool isProduction() const;

    /// Whether the environment and all six addresses equal those of \a other, case-sensitively.
    [[nodiscard]] bool operator==(EndpointData const& other) const;
    /// The reverse of operator== for \a other.
    [[nodiscard]] bool operator!=(EndpointData const& other) const;

    /// The remote environment.
    [[nodiscard]] ResourcesDefs::RemoteType getType() const;
    /// Sets the remote environment to \a type.
    void setType(ResourcesDefs::RemoteType type);

    /// The address of the service that the client talks to all the time.
    [[nodiscard]] QString getWs() const;
    /// Sets the address of the service that the client talks to all the time to \a url.
    void setWs(QString const& url);

    /// The address that takes usage figures.
    [[nodiscard]] QString getAnalytics() const;
    /// Sets the address that takes usage figures to \a url.
    void setAnalytics(QString const& url);

    /// The page on which users reset their password.
    [[nodiscard]] QString getPasswordReset() const;
    /// Sets the page on which users reset their password to \a url.
    void setPasswordReset(QString const& url);

    /// The page that tells what a release brings.
    [[nodiscard]] QString getWhatsNew() const;
    /// Sets the page that tells what a release brings to \a url.
    void setWhatsNew(QString const& url);

    /// The page about features that the user's licence does not include.
    [[nodiscard]] QString getLockedFeatureModeInfo() const;
    /// Sets the page about features that the user's licence does not include to \a url.
    ///
    /// Callers know the setter by this name; it is part of the interface, spelling and all.
    void setLocketFeautreModeInfo(QString const& url);

    /// The page that offers the client for mobile phones.
    [[nodiscard]] QString getDiscoverMobileOffer() const;
    /// Sets the page that offers the client for mobile phones to \a url.
    void setDiscoverMobileOffer(QString const& url);

private:
    ResourcesDefs::RemoteType m_type = ResourcesDefs::RemoteType::None;
    QString m_ws;
    QString m_analytics;
    QString m_passwordReset;
    QString m_whatsNew;
    QString m_lockedFeatureModeInfo;
    QString m_discoverMobileOffer;
};

/// The hash of \a endpoint under \a seed, for Qt's hashed containers; equal records have equal hashes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(EndpointData const& endpoint,
                                                     std::size_t seed = 0) noexcept;

/// Writes \a endpoint with all its fields to \a debug.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, EndpointData const& endpoint);

/// What QTest shows of \a endpoint when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(EndpointData const& endpoint);

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<EndpointData>
{
    /// The hash of \a endpoint.
    std::size_t operator()(EndpointData const& endpoint) const noexcept { return qHash(endpoint); }
};
