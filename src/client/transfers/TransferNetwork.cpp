#include "TransferNetwork_p.h"

#include <QIODevice>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <memory>

namespace Softphone {

namespace {

/// Reads another device, and cannot be rewound once anything has been read.
class OnceDevice : public QIODevice
{
public:
    explicit OnceDevice(QIODevice* body)
        : m_body(body)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return m_body->isSequential(); }
    [[nodiscard]] qint64 size() const override { return m_body->size(); }
    [[nodiscard]] bool atEnd() const override { return m_body->atEnd(); }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_body->bytesAvailable(); }
    bool seek(qint64) override { return false; }
    bool reset() override { return !m_wasRead; }

protected:
    qint64 readData(char* data, qint64 most) override
    {
        m_wasRead = m_wasRead || most > 0;
        return m_body->read(data, most);
    }
    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QIODevice* m_body;
    bool m_wasRead = false;
};

/// The application's proxies; where there is none, the socket is left to find that out by itself.
///
/// A connection that Qt knows to be direct is read without a buffer, and then Qt often takes an answer in
/// chunks that breaks off for a whole one. With a buffer it notices.
class BufferedWays : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(QNetworkProxyQuery const& query) override
    {
        QList<QNetworkProxy> ways = proxyForQuery(query);
        for (QNetworkProxy& way : ways) {
            if (way.type() == QNetworkProxy::NoProxy) {
                way = QNetworkProxy(QNetworkProxy::DefaultProxy);
            }
        }
        return ways;
    }
};

} // namespace

TransferNetwork::TransferNetwork(QObject* parent)
    : QNetworkAccessManager(parent)
{
    setProxyFactory(new BufferedWays);
}

QNetworkReply* TransferNetwork::createRequest(Operation operation, QNetworkRequest const& request,
                                              QIODevice* body)
{
    if (body == nullptr) {
        return QNetworkAccessManager::createRequest(operation, request, body);
    }
    // After a redirect the same form goes out again.
    body->reset();
    auto once = std::make_unique<OnceDevice>(body);
    QNetworkReply* const reply = QNetworkAccessManager::createRequest(operation, request, once.get());
    once.release()->setParent(reply);
    return reply;
}

} // namespace Softphone
