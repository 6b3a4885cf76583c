#pragma once

#include <QStringList>

/// What may stand in place of the last of \a words, which are those after "spcore" on a command line that is
/// being typed: a word on each line, and after a tab what it means. ":files" and ":folders" leave it to the
/// shell to list those.
///
/// An option's "=" may stand in a word of its own, as in bash.
[[nodiscard]] QStringList completions(QStringList words);
