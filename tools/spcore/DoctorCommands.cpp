#include "Assets.h"
#include "Commands.h"
#include "Console.h"
#include "Doctor.h"
#include "Reason.h"
#include "Redaction.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QSaveFile>
#include <QTextStream>
#include <algorithm>
#include <appdata/ApplicationData.h>
#include <array>
#include <cstdio>
#include <files/FilePaths.h>
#include <unistd.h>

namespace {

QString optionOffline()
{
    return QStringLiteral("offline");
}

QString optionOnline()
{
    return QStringLiteral("online");
}

QString optionReport()
{
    return QStringLiteral("report");
}

QString optionResources()
{
    return QStringLiteral("resources");
}

using Addresses = QList<std::pair<QString, QUrl>>;

/// The addresses of the production row of \a assets, each server once.
Addresses addressesOf(Assets const& assets)
{
    Addresses addresses;
    QStringList servers;
    for (EndpointData const& endpoint : assets.endpoints) {
        if (endpoint.getType() != ResourcesDefs::RemoteType::Production) {
            continue;
        }
        for (EndpointUrl const& url : endpointUrls) {
            QUrl const address((endpoint.*url.get)());
            QString const server = address.adjusted(QUrl::RemovePath | QUrl::RemoveQuery).toString();
            if (!address.isEmpty() && !servers.contains(server)) {
                servers += server;
                addresses.append({QStringLiteral("endpoint ") + QLatin1String(url.column), address});
            }
        }
    }
    return addresses;
}

/// Whether the user, who is asked where there is a terminal to ask, wants \a count servers to be asked.
bool mayAsk(QCommandLineParser const& parser, qsizetype count)
{
    bool const isAnswered = parser.isSet(optionOnline()) || parser.isSet(optionOffline());
    if (count == 0 || isAnswered || ::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0) {
        return count > 0 && parser.isSet(optionOnline()) && !parser.isSet(optionOffline());
    }
    Console::flush();
    std::fprintf(stderr, "Ask the client's servers (%d) whether they answer? [y/N] ",
                 static_cast<int>(count));
    QTextStream input(stdin);
    return input.readLine().trimmed().startsWith(QLatin1Char('y'), Qt::CaseInsensitive);
}

Findings askEndpoints(QCommandLineParser const& parser, Assets const& assets)
{
    Addresses const addresses = addressesOf(assets);
    if (mayAsk(parser, addresses.size())) {
        return Doctor::endpoints(addresses);
    }
    return {{QStringLiteral("endpoints"), Light::Green,
             addresses.isEmpty() ? QStringLiteral("none is known")
                                 : QStringLiteral("not asked; --online asks them"),
             QString()}};
}

/// Everything, in the order in which it is shown.
Findings examine(QCommandLineParser const& parser)
{
    QString const resources =
        parser.isSet(optionResources()) ? parser.value(optionResources()) : FilePaths::getResourcePath();
    Assets assets = Assets::read(Assets::fileIn(resources), ResourcesDefs::RcsLanguage::English);
    assets.registerFonts(resources);
    QString const version = QCoreApplication::applicationVersion();
    // From here on the folders are those of the client.
    ApplicationData::setApplicationData(assets.record);
    QCoreApplication::setApplicationVersion(version);
    return Doctor::versions() + Doctor::folders() + Doctor::space() + Doctor::database(resources, assets) +
           Doctor::fonts() + Doctor::locale() + Doctor::proxy() + Doctor::copies() +
           askEndpoints(parser, assets);
}

QString coloured(Light light)
{
    constexpr std::array colours = {"32", "33", "31"};
    QString const name = nameOf(light).leftJustified(7);
    return Console::hasColours() ? QStringLiteral("\x1b[%1m%2\x1b[0m")
                                       .arg(QLatin1String(colours.at(static_cast<std::size_t>(light))), name)
                                 : name;
}

/// \a finding as lines, after \a light.
QString linesOf(Finding const& finding, QString const& light)
{
    constexpr int column = 22;
    QString const line = light + Console::harmless(finding.name).leftJustified(column) + QLatin1Char(' ') +
                         Console::harmless(finding.text) + QLatin1Char('\n');
    return finding.advice.isEmpty() ? line
                                    : line + QString(7, QLatin1Char(' ')) + QStringLiteral("-> ") +
                                          Console::harmless(finding.advice) + QLatin1Char('\n');
}

QByteArray reportOf(Findings const& findings)
{
    QString text;
    for (Finding const& finding : findings) {
        text += linesOf(finding, nameOf(finding.light).leftJustified(7));
    }
    return QStringLiteral("spcore doctor, %1\n\n")
               .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODate))
               .toUtf8() +
           redacted(text).toUtf8();
}

ExitCode write(QString const& path, QByteArray const& report)
{
    QString const reason = Reason::notWritable(path, report.size());
    QSaveFile file(path);
    bool const isWritten = reason.isEmpty() && file.open(QIODevice::WriteOnly) &&
                           file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
                           file.write(report) == report.size() && file.commit();
    return isWritten ? ExitCode::Success
                     : failed(ExitCode::Failure, QStringLiteral("cannot write ") + path,
                              reason.isEmpty() ? file.errorString() : reason);
}

void show(QCommandLineParser const& parser, Findings const& findings, Light worst)
{
    if (!wantsJson(parser)) {
        for (Finding const& finding : findings) {
            Console::printBytes(linesOf(finding, coloured(finding.light)).toUtf8());
        }
        return;
    }
    QJsonArray array;
    for (Finding const& finding : findings) {
        array.append(QJsonObject{{QStringLiteral("name"), finding.name},
                                 {QStringLiteral("light"), nameOf(finding.light)},
                                 {QStringLiteral("text"), finding.text},
                                 {QStringLiteral("advice"), finding.advice}});
    }
    Console::printJson({{QStringLiteral("light"), nameOf(worst)}, {QStringLiteral("findings"), array}});
}

ExitCode doctor(QCommandLineParser const& parser)
{
    Findings const findings = examine(parser);
    Light const worst = std::ranges::max(findings, {}, &Finding::light).light;
    show(parser, findings, worst);
    if (parser.isSet(optionReport())) {
        ExitCode const code = write(parser.value(optionReport()), reportOf(findings));
        if (code != ExitCode::Success) {
            return code;
        }
    }
    return worst == Light::Red ? ExitCode::Failure : ExitCode::Success;
}

} // namespace

QList<Command> doctorCommands()
{
    return {
        {QStringLiteral("doctor"),
         QStringLiteral("Looks at what a client needs of this machine, and says what to do"),
         {},
         {QCommandLineOption(optionOffline(), QStringLiteral("Asks no server, and not whether to")),
          QCommandLineOption(optionOnline(), QStringLiteral("Asks the client's servers whether they answer")),
          QCommandLineOption(optionReport(),
                             QStringLiteral("Writes all of it to FILE too, for a ticket: without names, "
                                            "telephone numbers, addresses and keys"),
                             QStringLiteral("FILE")),
          QCommandLineOption(
              optionResources(),
              QStringLiteral("Takes the resource folder DIR of a client, not the one beside this command"),
              QStringLiteral("DIR"))},
         doctor,
         QStringLiteral(
             "{light, findings: [{name, light, text, advice}...]}; light is green, yellow or red, the "
             "first one that of the worst finding"),
         QStringLiteral("doctor --offline --report ticket.txt")}};
}
