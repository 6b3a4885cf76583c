#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

/// What a join reports to its caller, and asks it.
struct WavJoinHooks
{
    /// Told how many bytes of samples have been copied, and of how many.
    std::function<void(long long now, long long total)> progress;
    /// True ends the join.
    std::function<bool()> isCancelled;
};

/// Joins the samples of \a inputs, in this order, into the WAV file \a output.
///
/// The file is written beside \a output and takes its place when it is whole, so that a failure leaves what
/// was there, and nothing else. Only samples are copied: not what follows them in a file, and no incomplete
/// frame, after which all channels would change places.
///
/// \return what went wrong, being cancelled included; nothing when it went well
std::optional<QString> joinWavFiles(QString const& output, QStringList const& inputs,
                                    WavJoinHooks const& hooks);
