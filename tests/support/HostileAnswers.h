#pragma once

#include "ScriptedServer.h"

/// What no honest HTTP server answers, as scripts for a ScriptedServer.
///
/// Every answer that goes on and on ends properly after a while, so that a client without a limit of its own
/// takes all of it and succeeds, instead of never coming back.
///
/// \code
/// ScriptedServer const server(HostileAnswers::endlessTrailers());
/// QVERIFY(!NetworkUtils::downloadFile(server.url(), path, nullptr).ok);
/// \endcode
namespace HostileAnswers {

using Script = ScriptedServer::Script;

/// A body of \a start and \a zeros zero bytes under \a layers of "Transfer-Encoding: gzip". One layer makes
/// the zeros a thousandth, two make a gigabyte a few kilobytes.
[[nodiscard]] Script expanding(QByteArray const& start, qint64 zeros, int layers);

/// An empty body under two layers, the inner of which is \a blocks empty blocks: hundreds of megabytes to
/// look at that never come out.
[[nodiscard]] Script expandingToNothing(qint64 blocks);

/// Header lines of \a bytes together before a body of "body".
[[nodiscard]] Script manyHeaders(qint64 bytes);

/// A body of "body" in a chunk, with \a bytes of trailer lines after it.
[[nodiscard]] Script manyTrailers(qint64 bytes);

/// The same in one trailer that is continued from line to line.
[[nodiscard]] Script foldedTrailer(qint64 bytes);

/// \a bytes of interim answers (103) before the final one, whose body is "body".
[[nodiscard]] Script manyInterimAnswers(qint64 bytes);

/// A body of "body" whose chunk has an extension of \a bytes.
[[nodiscard]] Script longChunkExtension(qint64 bytes);

/// Takes the request and says nothing.
[[nodiscard]] Script silence();

} // namespace HostileAnswers
