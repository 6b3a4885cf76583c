#pragma once

#include <client/TransferRequest.h>

#include <QString>
#include <QVariant>

namespace SoftphoneQml {

/// The transfer request that a script describes by an object.
class RequestFromScript
{
public:
    /// Reads \a object, see TransfersExtension.
    explicit RequestFromScript(QVariantMap const& object);

    /// What is wrong with the object, for the script's author; empty when nothing is.
    [[nodiscard]] QString const& problem() const { return m_problem; }

    /// The request; of no use when there is a problem.
    [[nodiscard]] Softphone::TransferRequest const& request() const { return m_request; }

private:
    Softphone::TransferRequest m_request;
    QString m_problem;
};

} // namespace SoftphoneQml
