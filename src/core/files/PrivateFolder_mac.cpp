#include "PrivateFolder_p.h"

#include "FilePaths.h"

// Every user has a temporary folder of their own here, which is closed to others.
QString PrivateFolder::forTemporaryFiles(QString const& location, QStringList const& levels)
{
    QString const path = (QStringList(location) + levels).join(QLatin1Char('/'));
    return FilePaths::createFoldersIteratively(path) ? path : QString();
}
