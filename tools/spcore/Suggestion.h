#pragma once

#include <QString>
#include <QStringList>

/// The one of \a candidates that somebody who typed \a word may have meant; empty when none is near. At most
/// one letter in three may be wrong, left out, too many, or two of them swapped.
[[nodiscard]] QString nearest(QString const& word, QStringList const& candidates);
