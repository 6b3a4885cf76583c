#pragma once

#include <QString>

/// \a text without what a ticket need not tell: the user's folder and names, the machine's name, addresses
/// after "://" and their hosts, what looks like a telephone number (seven digits or more), and what looks
/// like a key (24 letters and digits or more).
[[nodiscard]] QString redacted(QString text);
