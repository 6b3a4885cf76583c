/// \file
/// One copy of a program is the first; later ones hand their arguments to it.

#pragma once

#include <client/softphoneclient_export.h>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <chrono>
#include <memory>

namespace Softphone {

/// Lets a second copy of a program hand what it was started with, such as a clicked "tel:" address, to the
/// first.
///
/// Only copies of the same user in the same session folder meet, and each end asks the system who the other
/// is before it says or believes anything: a message may dial a number.
///
/// \code
/// Softphone::InstanceChannel channel("example-softphone");
/// if (!channel.open() && channel.sendAndWait(QCoreApplication::arguments().mid(1))) {
///     return 0; // the first copy has taken it over
/// }
/// // The first copy, or one whose first copy does not answer: it starts in either case.
/// \endcode
///
/// The object belongs to the thread that made it. It needs a QCoreApplication, and to receive an event loop.
class SOFTPHONECLIENT_EXPORT InstanceChannel : public QObject
{
    Q_OBJECT

public:
    /// A channel between the copies of \a application, any text that no other program uses. It opens nothing
    /// yet.
    explicit InstanceChannel(QString const& application, QObject* parent = nullptr);

    /// Closes the channel. Copies whose message was not handed over yet are told that it was not.
    ~InstanceChannel() override;

    /// Makes this copy the first, unless another one is.
    ///
    /// Of any number of copies that call this at one moment, exactly one is the first, and it stays so until
    /// it ends, however it ends. A first copy that left a message unanswered for as long as its sender was
    /// patient and that still says nothing within half a second has its place taken by the next copy that
    /// calls this.
    ///
    /// \return whether this copy is the first and listens; errorText() tells why not
    bool open();

    /// Whether this copy is the first and listens.
    [[nodiscard]] bool isOpen() const;

    /// Whether a first copy listens at this moment, this one or another. Does not wait for one, as
    /// sendAndWait() does, nor for one that hangs.
    [[nodiscard]] bool hasListener() const;

    /// Hands \a arguments to the first copy, with the activation token of this process
    /// ($XDG_ACTIVATION_TOKEN), and waits until the slots there have run. Blocks for as long as \a patience
    /// at most, and does not run this thread's event loop meanwhile.
    ///
    /// A first copy that does not listen yet is waited for.
    ///
    /// \param arguments  at most 1,024, together with the token at most 64 KiB in UTF-8; they arrive as
    ///                   they are
    /// \param patience   how long to wait at most
    /// \return whether they were handed over. When not, errorText() tells why, and the first copy has not
    ///         seen them and will not see them later, with one exception: its slots had begun and did not
    ///         end in time.
    bool sendAndWait(QStringList const& arguments,
                     std::chrono::milliseconds patience = std::chrono::seconds(5));

    /// Why the last open() or sendAndWait() gave false, as a sentence for a person; empty after true.
    [[nodiscard]] QString errorText() const;

Q_SIGNALS:
    /// Another copy was started with \a arguments. A window that comes to the front shows \a activationToken
    /// to the desktop as its right to do so; it is empty where the desktop gave none.
    ///
    /// Comes from the event loop. The other copy waits until the slots have returned, so a slot that opens a
    /// dialog shows it without waiting for its end (QDialog::open()).
    void received(QStringList const& arguments, QByteArray const& activationToken);

private:
    class Private;
    std::unique_ptr<Private> m;
};

} // namespace Softphone
