#pragma once

#include <text/HTMLHelpers.h>
#include <text/SubstringWrapper.h>

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <regex>
#include <string>

/// The rules of the text operations written down step by step, without a thought for speed: what tests,
/// fuzz targets and benchmarks compare the library with.
///
/// Only for inputs short enough for them: the expressions take exponential time or recurse without bound.
namespace plain {

inline std::regex emailExpression()
{
    return std::regex(R"([A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,4})");
}

inline std::regex phoneNumberExpression()
{
    return std::regex(R"(((\+?[\d#*]{1,})(?:[\d#*,]*)*)(?!,))");
}

/// \a text in UTF-8, with a question mark for half a character, which some versions of Qt leave out.
inline std::string bytesOf(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
        } else if (text[i].isSurrogate()) {
            text[i] = QLatin1Char('?');
        }
    }
    return text.toUtf8().toStdString();
}

inline bool validateEmail(QString const& email)
{
    return std::regex_match(bytesOf(email), emailExpression());
}

inline bool validatePhoneNumber(QString const& number)
{
    return std::regex_match(bytesOf(number), phoneNumberExpression());
}

inline QString sanitizeHTMLCharacters(QString text)
{
    text.replace(QStringLiteral("&"), QStringLiteral("&amp;"));
    text.replace(QStringLiteral("<"), QStringLiteral("&lt;"));
    text.replace(QStringLiteral(">"), QStringLiteral("&gt;"));
    text.replace(QStringLiteral("\""), QStringLiteral("&quot;"));
    text.replace(QStringLiteral("'"), QStringLiteral("&apos;"));
    return text;
}

/// Only for well-formed text: the engine refuses any other as a whole.
inline QString deHTMLfy(QString html)
{
    html.remove(QRegularExpression(QStringLiteral("<[^>]*>"), QRegularExpression::InvertedGreedinessOption));
    html.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    html.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    html.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    html.replace(QStringLiteral("&quot;"), QStringLiteral("\""));
    html.replace(QStringLiteral("&apos;"), QStringLiteral("'"));
    return html;
}

/// \a subString is not empty.
inline QString wrapSubStringsInHTMLTag(QString text, QString const& subString, QString const& tag)
{
    QString const start = QStringLiteral("%start%");
    QString const end = QStringLiteral("%end%");
    qsizetype hit = text.indexOf(subString, 0, Qt::CaseInsensitive);
    while (hit >= 0) {
        text.insert(hit, start);
        text.insert(hit + start.size() + subString.size(), end);
        hit = text.indexOf(subString, hit + start.size() + end.size() + subString.size());
    }
    text = plain::sanitizeHTMLCharacters(text);
    text.replace(start, QStringLiteral("<") + tag + QStringLiteral(">"));
    text.replace(end, QStringLiteral("</") + tag + QStringLiteral(">"));
    return text;
}

inline bool isFilterMatched(QString const& text, QString const& filter, bool matchWordStart)
{
    QStringList const filterWords = filter.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList textWords = text.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString const& wanted : filterWords) {
        auto const found = std::find_if(textWords.begin(), textWords.end(), [&](QString const& word) {
            return matchWordStart ? word.startsWith(wanted) : word.contains(wanted);
        });
        if (found == textWords.end()) {
            return false;
        }
        textWords.erase(found);
    }
    return true;
}

inline QString removeDiacriticalMarks(QString const& text)
{
    QString kept;
    for (QChar const unit : text.normalized(QString::NormalizationForm_D)) {
        if (!unit.isMark()) {
            kept += unit;
        }
    }
    return kept;
}

inline SubstringWrapper::TokenOccurrences
getTokenOccurrences(QList<QString> const& filterWords, QList<QString> const& textWords, bool matchWordStart)
{
    SubstringWrapper::TokenOccurrences occurrences;
    if (filterWords.size() > textWords.size()) {
        return {};
    }
    for (qsizetype t = 0; t < filterWords.size(); ++t) {
        std::vector<int> candidates;
        for (qsizetype w = 0; w < textWords.size(); ++w) {
            if (matchWordStart ? textWords[w].startsWith(filterWords[t], Qt::CaseInsensitive)
                               : textWords[w].contains(filterWords[t], Qt::CaseInsensitive)) {
                candidates.push_back(static_cast<int>(w));
            }
        }
        if (candidates.empty()) {
            return {};
        }
        occurrences.emplace_back(static_cast<int>(t), candidates);
    }
    std::stable_sort(occurrences.begin(), occurrences.end(), [](auto const& left, auto const& right) {
        return left.second.size() < right.second.size();
    });
    return occurrences;
}

inline bool doRemoveDuplicates(SubstringWrapper::TokenOccurrences& occurrences, std::size_t index)
{
    std::vector<int>& own = occurrences[index].second;
    std::size_t at = 0;
    while (at < own.size()) {
        int const word = own[at];
        bool givenUp = false;
        for (std::size_t j = index + 1; j < occurrences.size() && !givenUp; ++j) {
            std::vector<int>& later = occurrences[j].second;
            auto const held = std::find(later.begin(), later.end(), word);
            if (held == later.end()) {
                continue;
            }
            if (later.size() > 1) {
                later.erase(held);
            } else if (own.size() == 1) {
                return false;
            } else {
                givenUp = true;
            }
        }
        if (givenUp) {
            own.erase(own.begin() + static_cast<std::ptrdiff_t>(at));
        } else {
            ++at;
        }
    }
    return true;
}

inline bool cleanFromDuplicates(SubstringWrapper::TokenOccurrences& occurrences)
{
    for (std::size_t i = 0; i + 1 < occurrences.size(); ++i) {
        if (!plain::doRemoveDuplicates(occurrences, i)) {
            return false;
        }
        occurrences[i].second.resize(std::min<std::size_t>(occurrences[i].second.size(), 1));
    }
    return true;
}

inline QString wrapText(QString const& filter, QString const& text,
                        std::pair<QString, QString> const& markers, bool matchWordStart)
{
    QStringList const filterWords = filter.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList textWords = text.split(QLatin1Char(' '), Qt::KeepEmptyParts);
    auto occurrences = plain::getTokenOccurrences(filterWords, textWords, matchWordStart);
    if (occurrences.empty() || !plain::cleanFromDuplicates(occurrences)) {
        return text;
    }
    for (auto const& [t, candidates] : occurrences) {
        QString& word = textWords[candidates.front()];
        qsizetype const hit = word.indexOf(filterWords[t], 0, Qt::CaseInsensitive);
        word = word.left(hit) + markers.first + word.mid(hit, filterWords[t].size()) + markers.second +
               word.mid(hit + filterWords[t].size());
    }
    return textWords.join(QLatin1Char(' '));
}

} // namespace plain
