/// \file
/// The objects as QML names them. What their functions take or give that QML does not know is in their
/// extensions. An engine gives these only to objects that it makes itself; those of one that was made in C++
/// stand behind it under another name: `fromProgram.DirectoryFunctions.caller(number)`.

#pragma once

#include "DirectoryExtension.h"
#include "TransfersExtension.h"

#include <client/CallClock.h>
#include <client/ContactDirectory.h>
#include <client/InstanceChannel.h>
#include <client/Reconnector.h>
#include <client/Transfer.h>
#include <client/Transfers.h>

#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// `CallClock`: its `status` takes a LineStatus.Status.
struct CallClockType
{
    Q_GADGET
    QML_FOREIGN(Softphone::CallClock)
    QML_NAMED_ELEMENT(CallClock)
};

/// `Reconnector`, with Reconnector.Waiting and its other states.
struct ReconnectorType
{
    Q_GADGET
    QML_FOREIGN(Softphone::Reconnector)
    QML_NAMED_ELEMENT(Reconnector)
};

/// `InstanceChannel`, for properties and connections to received().
struct InstanceChannelType
{
    Q_GADGET
    QML_FOREIGN(Softphone::InstanceChannel)
    QML_NAMED_ELEMENT(InstanceChannel)
    QML_UNCREATABLE("The program opens its channel before there is an engine: a second copy ends there.")
};

/// `ContactDirectory`, a model for views, with the functions of DirectoryFunctions.
struct ContactDirectoryType
{
    Q_GADGET
    QML_FOREIGN(Softphone::ContactDirectory)
    QML_NAMED_ELEMENT(ContactDirectory)
    QML_EXTENDED(SoftphoneQml::DirectoryExtension)
};

/// `Transfer`, which the functions of Transfers give.
struct TransferType
{
    Q_GADGET
    QML_FOREIGN(Softphone::Transfer)
    QML_NAMED_ELEMENT(Transfer)
    QML_UNCREATABLE("Transfers makes and owns it.")
};

/// `Transfers`, with the functions of TransfersFunctions.
struct TransfersType
{
    Q_GADGET
    QML_FOREIGN(Softphone::Transfers)
    QML_NAMED_ELEMENT(Transfers)
    QML_EXTENDED(SoftphoneQml::TransfersExtension)
};

} // namespace SoftphoneQml
