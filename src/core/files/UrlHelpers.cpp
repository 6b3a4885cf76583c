#include "UrlHelpers.h"

#include <QUrl>

QString UrlHelpers::getFileName(QString const& url)
{
    return QUrl(url).fileName(QUrl::FullyDecoded);
}

bool UrlHelpers::isValidFile(QString const& url)
{
    QUrl const parsed(url);
    return parsed.isValid() && !parsed.fileName().isEmpty();
}
