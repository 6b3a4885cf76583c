#pragma once

#include <softphonecore_export.h>

#include <QString>

/// The one-line texts that stand for a landline and for a SIP account in selection lists. Any thread.
class SOFTPHONECORE_EXPORT PhoneUtils
{
public:
    PhoneUtils() = delete;

    /// The text for a selected landline: \a first and \a second with a space between them.
    ///
    /// White space around the whole is trimmed, so that an empty part leaves none; white space inside is
    /// kept.
    ///
    /// \return the text; empty when both parts are
    [[nodiscard]] static QString getLandlineSelectedDescription(QString const& first, QString const& second);

    /// The text for a SIP account: \a first, \a middle in brackets, and \a last, with spaces between them.
    /// Without a \a middle there are no brackets either.
    ///
    /// White space around the whole is trimmed; white space inside is kept.
    ///
    /// \return the text; empty when all parts are
    ///
    /// Example: getSipAccountDescription("Reception", "201", "Main") is "Reception (201) Main".
    [[nodiscard]] static QString getSipAccountDescription(QString const& first, QString const& middle,
                                                          QString const& last);
};
