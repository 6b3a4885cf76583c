#pragma once

#include <text/LinkScanner_p.h>

#include <QRegularExpression>
#include <optional>

/// HTMLHelpers::processLinks with the plain expression, for texts short enough for the engine.
class LinkOracle
{
public:
    /// The text with its links; nothing when the engine refuses \a text or gives up on it.
    [[nodiscard]] static std::optional<QString> processLinks(QString const& text)
    {
        static QRegularExpression const expression(QString::fromUtf16(LinkScanner::expression));
        QString html;
        qsizetype written = 0;
        auto matches = expression.globalMatch(text);
        while (matches.hasNext()) {
            auto const match = matches.next();
            if (!match.isValid()) {
                return std::nullopt;
            }
            if (!match.hasMatch() || match.capturedLength() == 0) {
                continue;
            }
            html += text.mid(written, match.capturedStart() - written);
            QString link = match.captured();
            QString trailing;
            while (!link.isEmpty() && QStringLiteral(".;,!)").contains(link.back())) {
                trailing.prepend(link.back());
                link.chop(1);
            }
            html += QStringLiteral("<a href=\"") + link + QStringLiteral("\">") + link +
                    QStringLiteral("</a>") + trailing;
            written = match.capturedEnd();
        }
        if (!matches.isValid()) {
            return std::nullopt;
        }
        return html + text.mid(written);
    }
};
