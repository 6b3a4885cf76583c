/// \file
/// The enumerations of the client library, in one header because moc makes one meta-object per namespace.
/// Each is documented here and included by the header of the class that uses it.

#pragma once

#include <QtCore/qobjectdefs.h>

#include <client/softphoneclient_export.h>

/// The client library: values and objects that a client's windows bind to.
namespace Softphone {

Q_NAMESPACE_EXPORT(SOFTPHONECLIENT_EXPORT)

/// What a telephone number is for, as far as the numbering plan of its country tells.
enum class NumberKind {
    Unknown,
    FixedLine,
    Mobile,
    FixedLineOrMobile, ///< the plan does not tell the two apart
    TollFree,
    PremiumRate,
    SharedCost,
    Voip,
    Personal,
    Pager,
    Universal, ///< one company number that rings at several places
    Voicemail
};
Q_ENUM_NS(NumberKind)

/// How surely two numbers reach the same telephone; the later, the surer.
enum class NumberMatch {
    None,
    Short,    ///< one is the end of the other
    National, ///< the national numbers agree and only one of them has a country code
    Exact     ///< country code, national number and extension agree
};
Q_ENUM_NS(NumberMatch)

/// How the international prefix is dialled.
enum class PlusSign {
    Keep,      ///< "+", as mobile networks and most exchanges take it
    DoubleZero ///< "00", for exchanges that take digits only
};
Q_ENUM_NS(PlusSign)

/// What a link opens.
enum class LinkKind {
    Web,
    Email,
    Phone,
    Sip,
    Other ///< a scheme that only the rules of the search allow
};
Q_ENUM_NS(LinkKind)

/// What a download does where a file has its name already.
enum class IfExists {
    Replace,  ///< the old file goes once the new one is whole
    KeepBoth, ///< the new one is called "name (1).suffix", "name (2).suffix" and so on
    Fail
};
Q_ENUM_NS(IfExists)

/// Why a transfer ended.
enum class TransferError {
    None,
    Cancelled,
    BadAddress,
    SchemeRefused,
    HostNotFound,
    Refused,
    Tls,
    TimedOut,
    Stalled, ///< connected, and then no byte for as long as the limit allows
    TooLarge,
    TooManyRedirects,
    HttpStatus, ///< the server answered with a status of 400 or more
    WrongDigest,
    Truncated,
    CannotWrite,
    CannotRead,
    Protocol ///< an answer that makes no sense
};
Q_ENUM_NS(TransferError)

} // namespace Softphone
