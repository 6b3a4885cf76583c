/// \file
/// The enumerations as QML names them. All are scoped: Softphone.NumberKind.Mobile,
/// ContactReferenceType.Type.Mobile.

#pragma once

#include <client/Softphone.h>

#include <contacts/PBXContactInfo.h>

#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// The enumerations of the client library: Softphone.NumberKind, Softphone.TransferError and so on.
namespace Enumerations {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(Softphone)
QML_NAMED_ELEMENT(Softphone)
} // namespace Enumerations

/// What ContactPoint's `type` means. The core's enumeration has no meta-object.
namespace ContactReference {
Q_NAMESPACE
QML_NAMED_ELEMENT(ContactReferenceType)

/// What a number or an address of a contact is for.
enum class Type : int {
    Extension = static_cast<int>(ContactReferenceType::Extension), ///< of the PBX
    Work = static_cast<int>(ContactReferenceType::Work),
    Mobile = static_cast<int>(ContactReferenceType::Mobile),
    Home = static_cast<int>(ContactReferenceType::Home),
    Fax = static_cast<int>(ContactReferenceType::Fax),
    Other = static_cast<int>(ContactReferenceType::Other),
    Email = static_cast<int>(ContactReferenceType::Email),
};
Q_ENUM_NS(Type)
} // namespace ContactReference

} // namespace SoftphoneQml
