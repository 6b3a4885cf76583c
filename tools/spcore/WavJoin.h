#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <span>

struct WavLayout;

/// One file of a join.
struct WavSource
{
    QString name; ///< as the user has given it
    QString path; ///< where its bytes are
};

/// What a join reports to its caller, and asks it.
struct WavJoinHooks
{
    /// Told how many bytes of samples have been copied, and of how many.
    std::function<void(long long now, long long total)> progress;
    /// True ends the join.
    std::function<bool()> isCancelled;
};

/// Why the samples of a file with \a layout cannot be joined with others; empty when they can.
[[nodiscard]] QString notJoinable(WavLayout const& layout);

/// The header of a WAV file with the format and the list of \a first, for \a length bytes of samples: all up
/// to the first sample. Beyond 4 GiB it is that of an RF64 file.
[[nodiscard]] QByteArray wavHeader(WavLayout const& first, quint64 length);

/// Joins the samples of \a sources, in this order, into the WAV file \a output.
///
/// The file is written beside \a output and takes its place when it is whole, so that a failure leaves what
/// was there, and nothing else. Only samples are copied, under the format and the list of the first file: not
/// what follows them in a file, and no incomplete frame, after which all channels would change places.
///
/// \return what went wrong, being cancelled included; nothing when it went well
std::optional<QString> joinWavFiles(QString const& output, std::span<WavSource const> sources,
                                    WavJoinHooks const& hooks);
