#pragma once

#include <QList>
#include <QString>
#include <QUrl>

struct Assets;

/// How well something is on this machine.
enum class Light { Green, Yellow, Red };

/// "green", "yellow" or "red".
[[nodiscard]] QString nameOf(Light light);

/// One thing that was looked at.
struct Finding
{
    QString name;
    Light light = Light::Green;
    QString text;
    QString advice; ///< what to do; empty for a green one
};

using Findings = QList<Finding>;

/// What a client needs of a machine, looked at without changing anything. Nothing is made, asked over the
/// network, or told to a running copy.
namespace Doctor {

/// The command, the toolkit, the system and the libraries, and what of the toolkit is missing.
[[nodiscard]] Findings versions();

/// The folders of the application that QCoreApplication names: whose they are, and who may use them.
[[nodiscard]] Findings folders();

/// The room on the disks of these folders.
[[nodiscard]] Findings space();

/// The assets database in the resource folder \a resources, which has given \a assets, and its fonts.
[[nodiscard]] Findings database(QString const& resources, Assets const& assets);

[[nodiscard]] Findings fonts();
[[nodiscard]] Findings locale();
[[nodiscard]] Findings proxy();

/// The lock files of first copies of the application that QCoreApplication names, and whether a first copy of
/// any has left a message unanswered.
[[nodiscard]] Findings copies();

/// Asks the server of each of \a addresses, all at once, whether it answers, whatever it answers.
///
/// \param addresses  each with the name of its finding; a WebSocket's is asked as a web server's
[[nodiscard]] Findings endpoints(QList<std::pair<QString, QUrl>> const& addresses);

} // namespace Doctor
