#pragma once

#include <QNetworkAccessManager>

namespace Softphone {

/// Qt's manager, except for two things. It sends the body of a post at most once: Qt sends a request again
/// when the connection ends without an answer, and then nobody knows whether the first one was carried out.
/// And it reads through a buffer, so that an answer in chunks that breaks off is not taken for a whole one.
class TransferNetwork : public QNetworkAccessManager
{
    Q_OBJECT

public:
    explicit TransferNetwork(QObject* parent = nullptr);

protected:
    QNetworkReply* createRequest(Operation operation, QNetworkRequest const& request,
                                 QIODevice* body) override;
};

} // namespace Softphone
