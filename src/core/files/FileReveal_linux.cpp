#include "FileReveal_p.h"

#include <QFileInfo>
#include <QUrl>

FileReveal::Program FileReveal::desktopProgram(QString const& path)
{
    // Everything but letters, digits and the slash is encoded: a comma would end the item in dbus-send's
    // list, an apostrophe in gdbus's.
    QString const url = QStringLiteral("file://") +
                        QString::fromLatin1(QUrl::toPercentEncoding(path, QByteArrayLiteral("/")));
    // One process that is started and left alone: which of the ways works shows only after their answer.
    QString const script = QStringLiteral(
        "n=org.freedesktop.FileManager1 p=/org/freedesktop/FileManager1\n"
        "dbus-send --session --print-reply --dest=$n $p $n.ShowItems array:string:\"$1\" string: ||\n"
        "gdbus call --session --dest $n --object-path $p --method $n.ShowItems \"['$1']\" '' ||\n"
        "xdg-open \"$2\"\n");
    return {QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), script, QStringLiteral("sh"), url, QFileInfo(path).path()}};
}
