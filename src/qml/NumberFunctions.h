#pragma once

#include <client/PhoneNumber.h>
#include <client/Softphone.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// `Numbers`: the functions of telephone numbers. A region is the two letters of ISO 3166, such as "IT".
class NumberFunctions : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Numbers)
    QML_SINGLETON

public:
    /// For the engine, which makes one.
    using QObject::QObject;

    /// The `phoneNumber` that \a text is in \a region; undefined when it is none:
    /// `Numbers.parse(text, "IT")?.national ?? text`.
    [[nodiscard]] Q_INVOKABLE QVariant parse(QString const& text, QString const& region) const;

    /// What to dial for \a typed in \a region; empty when it holds no number. \a plus tells how the
    /// international prefix is dialled.
    [[nodiscard]] Q_INVOKABLE QString dialString(QString const& typed, QString const& region,
                                                 Softphone::PlusSign plus = Softphone::PlusSign::Keep) const;

    /// \a typed as it looks best in a field while somebody types it in \a region.
    [[nodiscard]] Q_INVOKABLE QString formatAsTyped(QString const& typed, QString const& region) const;

    /// Where the cursor goes that was at \a cursor in \a typed, once the field shows \a formatted, which
    /// formatAsTyped() made of it.
    [[nodiscard]] Q_INVOKABLE int cursorInFormatted(QString const& typed, int cursor,
                                                    QString const& formatted) const;

    /// The numbers in running text \a text, as a reader in \a region understands them: a list of
    /// `foundNumber`, each with `position`, `length` and `number`.
    [[nodiscard]] Q_INVOKABLE QList<Softphone::FoundNumber> find(QString const& text,
                                                                 QString const& region) const;

    /// How surely \a first and \a second reach the same telephone.
    [[nodiscard]] Q_INVOKABLE Softphone::NumberMatch match(Softphone::PhoneNumber const& first,
                                                           Softphone::PhoneNumber const& second) const;

    /// Which service the home country's emergency number \a digits reaches; empty for any other text.
    [[nodiscard]] Q_INVOKABLE QString emergencyService(QString const& digits) const;
};

} // namespace SoftphoneQml
