#pragma once

#include <QString>

/// \a text in Unicode's canonical decomposition without the UTF-16 units that are marks, as
/// StringUtils::removeDiacriticalMarks() gives it.
///
/// Does not decompose the whole text first: letters that stay are copied in runs.
QString withoutMarks(QString const& text);
