#include "Redaction.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QSysInfo>
#include <pwd.h>
#include <unistd.h>

namespace {

void replaceWord(QString& text, QString const& word, QString const& replacement)
{
    if (word.size() > 1) {
        text.replace(
            QRegularExpression(
                QStringLiteral("(?<![[:alnum:]])%1(?![[:alnum:]])").arg(QRegularExpression::escape(word)),
                QRegularExpression::UseUnicodePropertiesOption),
            replacement);
    }
}

/// Replaces the addresses of \a text, and their hosts wherever else they are named.
void replaceAddresses(QString& text)
{
    static QRegularExpression const address(QStringLiteral("(?<=://)([^\\s,;\"'/:]+)[^\\s,;\"']*"));
    QString const replacement = QStringLiteral("(address)");
    QStringList hosts;
    for (auto found = address.globalMatch(text); found.hasNext();) {
        hosts += found.next().captured(1);
    }
    hosts.removeDuplicates();
    text.replace(address, replacement);
    for (QString const& host : hosts) {
        replaceWord(text, host, replacement);
    }
}

} // namespace

QString redacted(QString text)
{
    passwd const* const user = ::getpwuid(::geteuid());
    QString const person = QStringLiteral("(user)");
    if (QString const home = QDir::homePath(); home.size() > 1) {
        text.replace(home, QStringLiteral("~"));
    }
    if (user != nullptr) {
        replaceWord(text, QFile::decodeName(user->pw_gecos).section(QLatin1Char(','), 0, 0), person);
        // What belongs to root belongs to nobody in particular.
        replaceWord(text, user->pw_uid == 0 ? QString() : QFile::decodeName(user->pw_name), person);
    }
    replaceWord(text, QSysInfo::machineHostName(), QStringLiteral("(machine)"));
    static QRegularExpression const key(
        QStringLiteral("(?<![[:alnum:]])(?=[A-Za-z_+=-]*[0-9])[A-Za-z0-9_+=-]{24,}"));
    static QRegularExpression const number(
        QStringLiteral("(?<![[:alnum:].])\\+?[0-9](?:[ ()/-]{0,2}[0-9]){6,}"));
    replaceAddresses(text);
    return text.replace(key, QStringLiteral("(key)")).replace(number, QStringLiteral("(number)"));
}
