#pragma once

#include <QString>
#include <QStringView>
#include <optional>

/// The matching of search filters, as StringUtils::isFilterMatched() defines it: all text of a name and all
/// words of a filter in lower case.
namespace FilterMatcher {

/// The answer for any text and filter, on lowered copies of both.
bool matches(QString const& text, QString const& filter, bool matchWordStart);

/// The same answer for the usual name and filter, without a copy of the name: its characters are lowered as
/// they are looked at. Nothing when the filter is long, or one of the two holds a character that is not
/// lowered unit by unit before the answer is found.
std::optional<bool> matchesUnitByUnit(QStringView text, QStringView filter, bool matchWordStart);

} // namespace FilterMatcher
