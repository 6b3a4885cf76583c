#pragma once

#include <text/LinkScanner_p.h>

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <optional>

/// HTMLHelpers::processLinks with the expression that defines it, for texts short enough for the engine.
class LinkOracle
{
public:
    /// What is linked, in the notation of QRegularExpression without options.
    [[nodiscard]] static QString const& pattern()
    {
        static QString const text =
            QStringLiteral(
                R"((\b(?:[\w.+-]+@(?:[a-zA-Z0-9-]*[a-zA-Z][a-zA-Z0-9-]*\.)+[a-zA-Z]{2,})(?:[/:]\S*)?)"
                R"(|(?:\b(?:www\.(?:[a-zA-Z0-9-]*[a-zA-Z][a-zA-Z0-9-]*\.)+[a-zA-Z]{2,})(?:[/:]\S*)?))"
                R"(|(?:\b(?:[a-zA-Z0-9-]*[a-zA-Z][a-zA-Z0-9-]*\.)+[a-zA-Z]{2,}(?:[/:]\S*)?))"
                R"(|(?:\b(?:%1)://\S+))"
                R"(|(?:(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)\.){3}(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d))"
                R"((?::\d+)?(?:/\S*)?)|(?:\+?\d{9,})(?:[\d#*,]+)*)")
                .arg(schemes().join(u'|'));
        return text;
    }

    /// Every scheme of the scanner's table as it may be written: all lower and all upper case.
    [[nodiscard]] static QStringList schemes()
    {
        QStringList written;
        for (QStringView const scheme : LinkScanner::schemes) {
            written += scheme.toString();
            written += scheme.toString().toUpper();
        }
        return written;
    }

    /// The words that the expression names, whatever part of it they stand in, each as a name before a colon
    /// too. Texts made of them find a scheme that only the expression or only the scanner knows.
    [[nodiscard]] static QStringList words()
    {
        static QRegularExpression const escape(QStringLiteral(R"(\\.)"));
        static QRegularExpression const word(QStringLiteral("[A-Za-z]{2,}"));
        QString const unescaped = QString(pattern()).replace(escape, QStringLiteral(" "));
        QStringList found;
        auto matches = word.globalMatch(unescaped);
        while (matches.hasNext()) {
            QString const name = matches.next().captured();
            found += {name, name + u':', name + QStringLiteral("://")};
        }
        found.removeDuplicates();
        return found;
    }

    /// The text with its links; nothing when the engine refuses \a text or gives up on it.
    [[nodiscard]] static std::optional<QString> processLinks(QString const& text)
    {
        static QRegularExpression const expression(pattern());
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
