#include "EndpointData.h"

#include <QByteArray>
#include <QDebug>
#include <QHashFunctions>

using ResourcesDefs::RemoteType;

EndpointData::EndpointData() = default;

bool EndpointData::isProduction() const
{
    return m_type == RemoteType::Production;
}

bool EndpointData::operator==(EndpointData const& other) const
{
    return m_type == other.m_type && m_ws == other.m_ws && m_analytics == other.m_analytics &&
           m_passwordReset == other.m_passwordReset && m_whatsNew == other.m_whatsNew &&
           m_lockedFeatureModeInfo == other.m_lockedFeatureModeInfo &&
           m_discoverMobileOffer == other.m_discoverMobileOffer;
}

bool EndpointData::operator!=(EndpointData const& other) const
{
    return !(*this == other);
}

RemoteType EndpointData::getType() const
{
    return m_type;
}

void EndpointData::setType(RemoteType type)
{
    m_type = type;
}

QString EndpointData::getWs() const
{
    return m_ws;
}

void EndpointData::setWs(QString const& url)
{
    m_ws = url;
}

QString EndpointData::getAnalytics() const
{
    return m_analytics;
}

void EndpointData::setAnalytics(QString const& url)
{
    m_analytics = url;
}

QString EndpointData::getPasswordReset() const
{
    return m_passwordReset;
}

void EndpointData::setPasswordReset(QString const& url)
{
    m_passwordReset = url;
}

QString EndpointData::getWhatsNew() const
{
    return m_whatsNew;
}

void EndpointData::setWhatsNew(QString const& url)
{
    m_whatsNew = url;
}

QString EndpointData::getLockedFeatureModeInfo() const
{
    return m_lockedFeatureModeInfo;
}

void EndpointData::setLocketFeautreModeInfo(QString const& url)
{
    m_lockedFeatureModeInfo = url;
}

QString EndpointData::getDiscoverMobileOffer() const
{
    return m_discoverMobileOffer;
}

void EndpointData::setDiscoverMobileOffer(QString const& url)
{
    m_discoverMobileOffer = url;
}

std::size_t qHash(EndpointData const& endpoint, std::size_t seed) noexcept
{
    return qHashMulti(seed, static_cast<int>(endpoint.getType()), endpoint.getWs(), endpoint.getAnalytics(),
                      endpoint.getPasswordReset(), endpoint.getWhatsNew(),
                      endpoint.getLockedFeatureModeInfo(), endpoint.getDiscoverMobileOffer());
}

QDebug operator<<(QDebug debug, EndpointData const& endpoint)
{
    QDebugStateSaver const saver(debug);
    debug.nospace() << "EndpointData(type " << static_cast<int>(endpoint.getType()) << ", ws "
                    << endpoint.getWs() << ", analytics " << endpoint.getAnalytics() << ", passwordReset "
                    << endpoint.getPasswordReset() << ", whatsNew " << endpoint.getWhatsNew()
                    << ", lockedFeatureModeInfo " << endpoint.getLockedFeatureModeInfo()
                    << ", discoverMobileOffer " << endpoint.getDiscoverMobileOffer() << ')';
    return debug;
}

char* toString(EndpointData const& endpoint)
{
    return qstrdup(QDebug::toString(endpoint).toUtf8().constData());
}
