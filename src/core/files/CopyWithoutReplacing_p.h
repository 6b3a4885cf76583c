#pragma once

#include <QString>

/// Copies the file \a src, with its permissions, to \a dst, which is there when it is whole. False as well
/// when something has the name \a dst, also when that happens this very moment.
[[nodiscard]] bool copyWithoutReplacing(QString const& src, QString const& dst);
