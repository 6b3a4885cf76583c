#include "Commands.h"
#include "Console.h"
#include "Interrupt.h"

#include <runtime/SingleInstanceGuard.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <client/InstanceChannel.h>
#include <cstdio>

using Softphone::InstanceChannel;

namespace {

/// Whoever reads along in a pipe sees each line when it is written.
void printNow(QString const& text)
{
    Console::print(text);
    std::fflush(stdout);
}

/// On one line whatever they hold, with empty ones to be seen.
QString asLine(QStringList const& arguments)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromStringList(arguments)).toJson(QJsonDocument::Compact));
}

ExitCode send(QString const& name, QStringList const& arguments)
{
    InstanceChannel channel(name);
    // Nobody at a terminal waits for a copy that may be started later.
    if (!channel.hasListener()) {
        return failed(ExitCode::Failure, QStringLiteral("not delivered to ") + name,
                      QStringLiteral("No other copy is listening."));
    }
    if (!channel.sendAndWait(arguments)) {
        return failed(ExitCode::Failure, QStringLiteral("not delivered to ") + name, channel.errorText());
    }
    Console::print(QStringLiteral("delivered"));
    return ExitCode::Success;
}

ExitCode serve(QString const& name)
{
    SingleInstanceGuard guard;
    guard.setup(name, QStringLiteral("spcore"), qEnvironmentVariable("USER"));
    if (guard.isAnotherRunning()) {
        Console::print(QStringLiteral("another copy of ") + name + QStringLiteral(" is running"));
        return ExitCode::Success;
    }
    int kicks = 0;
    guard.setNewInstanceKicking([&kicks] { printNow(QStringLiteral("kick ") + QString::number(++kicks)); });
    if (!guard.launchServer()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot lock ") + name);
    }
    InstanceChannel channel(name);
    QObject::connect(&channel, &InstanceChannel::received, &channel, [](QStringList const& arguments) {
        printNow(QStringLiteral("received ") + Console::harmless(asLine(arguments)));
    });
    if (!channel.open()) {
        // Kicks arrive all the same.
        failed(ExitCode::Failure, QStringLiteral("cannot receive arguments"), channel.errorText());
    }
    Interrupt interrupt;
    printNow(QStringLiteral("no other copy of ") + name +
             QStringLiteral(" is running; serving until Ctrl-C"));
    interrupt.whenRequested([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    guard.stopServer();
    Console::print(QStringLiteral("stopped"));
    return ExitCode::Success;
}

ExitCode runGuard(QCommandLineParser const& parser)
{
    QString const name = parser.positionalArguments().constFirst();
    QStringList const arguments = parser.positionalArguments().mid(1);
    if (parser.isSet(QStringLiteral("send"))) {
        return send(name, arguments);
    }
    return arguments.isEmpty() ? serve(name)
                               : failed(ExitCode::Usage, QStringLiteral("arguments are for --send only"));
}

} // namespace

QList<Command> guardCommands()
{
    return {{QStringLiteral("guard"),
             QStringLiteral("Shows whether another copy runs; if not, serves and prints what copies send"),
             {{QStringLiteral("NAME"), QStringLiteral("Name or path under which copies find each other")},
              {QStringLiteral("[ARGUMENT...]"),
               QStringLiteral("What --send hands over; after -- also what begins with a hyphen")}},
             {QCommandLineOption(QStringLiteral("send"),
                                 QStringLiteral("Hands the arguments to the copy that is running"))},
             runGuard}};
}
