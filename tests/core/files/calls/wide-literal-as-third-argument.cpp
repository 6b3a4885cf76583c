#include <files/FilePaths.h>

QString path()
{
    return FilePaths::buildAbsoluteFilePath(QStringLiteral("/d"), QStringLiteral("a"), u"b.txt");
}
