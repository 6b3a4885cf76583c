#pragma once

#include <softphonecore_export.h>

#include <QString>

/// Random identifiers.
class SOFTPHONECORE_EXPORT UniqueId
{
public:
    UniqueId() = delete;

    /// A new random UUID (version 4) as text without braces: 36 characters, lower-case.
    ///
    /// Any thread.
    [[nodiscard]] static QString createUUID();

    /// A random number of 32 bits; the upper half of a wider `unsigned long` is always 0.
    ///
    /// Numbers can repeat: among 77,000 of them the chance that two are equal is one half. Code that stores
    /// things under them has to deal with that. Any thread.
    [[nodiscard]] static unsigned long generateNumber();
};
