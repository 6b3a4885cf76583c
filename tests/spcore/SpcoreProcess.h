#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

/// How one run of the built spcore command ended, and what it printed.
struct SpcoreResult
{
    int exitCode = -1; ///< -1 when it did not start, crashed, or did not end in time
    QByteArray out;
    QByteArray err;

    /// Whether the run failed as a user should see it: \a expected as exit code, nothing on standard output,
    /// and one line on standard error.
    [[nodiscard]] bool failedWithOneLine(int expected) const
    {
        return exitCode == expected && out.isEmpty() && err.startsWith("spcore: ") && err.count('\n') == 1 &&
               err.endsWith('\n');
    }
};

/// A run of the built spcore command as a user starts it. The environment is the test's own (see
/// TestEnvironment) unless it is changed before run().
class SpcoreProcess
{
public:
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QString workingDirectory;
    int timeoutSeconds = 60;

    /// Starts the command with \a arguments, gives it \a input on standard input, and waits for its end.
    [[nodiscard]] SpcoreResult run(QStringList const& arguments, QByteArray const& input = QByteArray()) const
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(workingDirectory);
        process.start(QStringLiteral(SPCORE_PROGRAM), arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(timeoutSeconds * 1000)) {
            process.kill();
            process.waitForFinished();
        }
        bool const ended =
            process.error() == QProcess::UnknownError && process.exitStatus() == QProcess::NormalExit;
        return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
                process.readAllStandardError()};
    }
};

/// SpcoreProcess::run() with nothing out of the ordinary.
inline SpcoreResult runSpcore(QStringList const& arguments, QByteArray const& input = QByteArray())
{
    return SpcoreProcess().run(arguments, input);
}
