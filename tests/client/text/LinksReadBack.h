#pragma once

#include <client/Links.h>

#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <utility>

/// The links of a document, as somebody who clicks in it meets them.
struct LinksReadBack
{
    struct Anchor
    {
        qsizetype position;
        qsizetype length;
        QString target;
    };

    QString text; ///< a unit of the document for each, line breaks as '\n'
    QList<Anchor> anchors;

    explicit LinksReadBack(QString const& html)
    {
        QTextDocument document;
        document.setHtml(html);
        text = document.toPlainText();
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                add(part.fragment());
            }
        }
    }

    [[nodiscard]] bool hasLinks(QList<Softphone::Link> const& links) const
    {
        if (links.size() != anchors.size()) {
            return false;
        }
        for (qsizetype i = 0; i < links.size(); ++i) {
            bool const same = links[i].position == anchors[i].position &&
                              links[i].length == anchors[i].length &&
                              links[i].target == QUrl(anchors[i].target);
            if (!same) {
                return false;
            }
        }
        return true;
    }

    /// Whether the document shows \a original, blanks as blanks and what cannot be shown as such.
    [[nodiscard]] bool shows(QString const& original) const
    {
        if (original.size() != text.size()) {
            return false;
        }
        for (qsizetype i = 0; i < text.size(); ++i) {
            QChar const c = original[i];
            bool const same = c.isSpace() ? text[i] == u' ' || text[i] == u'\n'
                                          : text[i] == c || text[i] == QChar::ReplacementCharacter;
            if (!same) {
                return false;
            }
        }
        return true;
    }

private:
    void add(QTextFragment const& fragment)
    {
        QString const target = fragment.charFormat().anchorHref();
        if (target.isEmpty()) {
            return;
        }
        bool const goesOn = !anchors.isEmpty() && anchors.constLast().target == target &&
                            anchors.constLast().position + anchors.constLast().length == fragment.position();
        if (goesOn) {
            anchors.last().length += fragment.length();
        } else {
            anchors.push_back({fragment.position(), fragment.length(), target});
        }
    }
};
