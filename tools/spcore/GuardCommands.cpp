#include "Commands.h"
#include "Console.h"
#include "Interrupt.h"

#include <runtime/SingleInstanceGuard.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <client/InstanceChannel.h>

using Softphone::InstanceChannel;

namespace {

/// Prints \a text, or with --json \a event and what belongs to it. Whoever reads along in a pipe sees each
/// line when it is written.
void tell(QCommandLineParser const& parser, QString const& text, QString const& event,
          QJsonObject object = QJsonObject())
{
    object[QStringLiteral("event")] = event;
    if (wantsJson(parser)) {
        Console::printJson(object);
    } else {
        Console::print(text);
    }
    Console::flush();
}

/// On one line whatever they hold, with empty ones to be seen.
QString asLine(QJsonArray const& arguments)
{
    return QString::fromUtf8(QJsonDocument(arguments).toJson(QJsonDocument::Compact));
}

ExitCode send(QCommandLineParser const& parser, QString const& name, QStringList const& arguments)
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
    tell(parser, QStringLiteral("delivered"), QStringLiteral("delivered"));
    return ExitCode::Success;
}

ExitCode serve(QCommandLineParser const& parser, QString const& name)
{
    SingleInstanceGuard guard;
    guard.setup(name, QStringLiteral("spcore"), qEnvironmentVariable("USER"));
    if (guard.isAnotherRunning()) {
        tell(parser, QStringLiteral("another copy of ") + name + QStringLiteral(" is running"),
             QStringLiteral("running"), {{QStringLiteral("name"), name}});
        return ExitCode::Success;
    }
    int kicks = 0;
    guard.setNewInstanceKicking([&parser, &kicks] {
        ++kicks;
        tell(parser, QStringLiteral("kick ") + QString::number(kicks), QStringLiteral("kick"),
             {{QStringLiteral("count"), kicks}});
    });
    if (!guard.launchServer()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot lock ") + name);
    }
    InstanceChannel channel(name);
    QObject::connect(&channel, &InstanceChannel::received, &channel, [&parser](QStringList const& words) {
        QJsonArray const arguments = QJsonArray::fromStringList(words);
        tell(parser, QStringLiteral("received ") + Console::harmless(asLine(arguments)),
             QStringLiteral("received"), {{QStringLiteral("arguments"), arguments}});
    });
    if (!channel.open()) {
        // Kicks arrive all the same.
        failed(ExitCode::Failure, QStringLiteral("cannot receive arguments"), channel.errorText());
    }
    Interrupt interrupt;
    tell(parser,
         QStringLiteral("no other copy of ") + name + QStringLiteral(" is running; serving until Ctrl-C"),
         QStringLiteral("serving"), {{QStringLiteral("name"), name}});
    interrupt.whenRequested([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    guard.stopServer();
    tell(parser, QStringLiteral("stopped"), QStringLiteral("stopped"));
    return interrupt.exitCode();
}

ExitCode runGuard(QCommandLineParser const& parser)
{
    QString const name = parser.positionalArguments().constFirst();
    QStringList const arguments = parser.positionalArguments().mid(1);
    if (parser.isSet(QStringLiteral("send"))) {
        return send(parser, name, arguments);
    }
    return arguments.isEmpty() ? serve(parser, name)
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
             runGuard,
             QStringLiteral("{event} for each thing that happens: serving and running with name, kick with "
                            "count, received with arguments, stopped, delivered"),
             QStringLiteral("guard --send desk -- tel:+39061234567")}};
}
