#pragma once

#include <QByteArrayView>

/// What qUncompress makes of \a compressed (four bytes of size, then a zlib stream), without believing
/// the size: memory grows with what the stream turns out to hold, to less than twice of it.
///
/// Gives the content of the first complete stream; empty when the stream is damaged or cut short, or its
/// content is more than there is memory for.
QByteArray inflated(QByteArrayView compressed);
