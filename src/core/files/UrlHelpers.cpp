#include "UrlHelpers.h"

#include "../Boundary_p.h"

#include <QUrl>

QString UrlHelpers::getFileName(QString const& url)
{
    return guarded([&] { return QUrl(url).fileName(QUrl::FullyDecoded); });
}

bool UrlHelpers::isValidFile(QString const& url)
{
    return guarded([&] {
        QUrl const parsed(url);
        return parsed.isValid() && !parsed.fileName().isEmpty();
    });
}
