#include "Commands.h"
#include "Console.h"
#include "Interrupt.h"

#include <runtime/SingleInstanceGuard.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <cstdio>

namespace {

constexpr std::chrono::milliseconds interruptCheck(100);

/// Whoever reads along in a pipe sees each line when it is written.
void printNow(QString const& text)
{
    Console::print(text);
    std::fflush(stdout);
}

void waitFor(Interrupt const& interrupt)
{
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&interrupt] {
        if (interrupt.wasRequested()) {
            QCoreApplication::quit();
        }
    });
    timer.start(interruptCheck);
    QCoreApplication::exec();
}

ExitCode runGuard(QCommandLineParser const& parser)
{
    QString const name = parser.positionalArguments().constFirst();
    SingleInstanceGuard guard;
    guard.setup(name, QStringLiteral("spcore"), qEnvironmentVariable("USER"));
    if (guard.isAnotherRunning()) {
        Console::print(QStringLiteral("another copy of ") + name + QStringLiteral(" is running"));
        return ExitCode::Success;
    }
    int kicks = 0;
    guard.setNewInstanceKicking([&kicks] { printNow(QStringLiteral("kick ") + QString::number(++kicks)); });
    if (!guard.launchServer()) {
        Console::printError(QStringLiteral("cannot lock ") + name);
        return ExitCode::Failure;
    }
    Interrupt const interrupt;
    printNow(QStringLiteral("no other copy of ") + name +
             QStringLiteral(" is running; serving until Ctrl-C"));
    waitFor(interrupt);
    guard.stopServer();
    Console::print(QStringLiteral("stopped"));
    return ExitCode::Success;
}

} // namespace

QList<Command> guardCommands()
{
    return {{QStringLiteral("guard"),
             QStringLiteral("Shows whether another copy runs; if not, serves and prints each kick"),
             {{QStringLiteral("NAME"), QStringLiteral("Name or path under which copies find each other")}},
             {},
             runGuard}};
}
