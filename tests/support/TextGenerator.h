#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <random>

/// Makes seeded random texts out of pieces that are likely to meet.
class TextGenerator
{
public:
    TextGenerator(unsigned int seed, QStringList pieces)
        : m_engine(seed)
        , m_pieces(std::move(pieces))
    {
    }

    /// A text of at most \a mostPieces pieces.
    QString text(int mostPieces)
    {
        QString text;
        for (int left = number(0, mostPieces); left > 0; --left) {
            text += m_pieces[number(0, static_cast<int>(m_pieces.size()) - 1)];
        }
        return text;
    }

    int number(int lowest, int highest)
    {
        return std::uniform_int_distribution<int>(lowest, highest)(m_engine);
    }

    bool coin() { return number(0, 1) == 1; }

    /// Every text of exactly \a length pieces, one after the other: \a visit gets each.
    template <typename Visit>
    static void visitAll(QStringList const& pieces, int length, Visit visit)
    {
        visitAllBehind(QString(), pieces, length, visit);
    }

private:
    template <typename Visit>
    static void visitAllBehind(QString const& front, QStringList const& pieces, int length, Visit& visit)
    {
        if (length == 0) {
            visit(front);
            return;
        }
        for (QString const& piece : pieces) {
            visitAllBehind(front + piece, pieces, length - 1, visit);
        }
    }

    std::mt19937 m_engine;
    QStringList m_pieces;
};
