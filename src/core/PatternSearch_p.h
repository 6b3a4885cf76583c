#pragma once

#include <QVarLengthArray>
#include <QtGlobal>
#include <functional>
#include <string_view>

/// Finds one text in others in time linear in both, whatever they hold (the method of Knuth, Morris and
/// Pratt).
///
/// The searches of Qt and of the standard library compare most of the pattern again at each position of a
/// text such as "aaaa...". Where pattern or text may come from a stranger, that is a way to stop the client.
template <typename Unit>
class PatternSearch
{
public:
    using Text = std::basic_string_view<Unit>;

    /// \a pattern must outlive the search.
    explicit PatternSearch(Text pattern)
        : m_pattern(pattern.data())
        , m_size(qsizetype(pattern.size()))
    {
    }

    /// The first position at or after \a from at which \a text holds the pattern, or -1. An empty pattern is
    /// found at once.
    [[nodiscard]] qsizetype indexIn(Text text, qsizetype from = 0)
    {
        Unit const* const end = text.data() + text.size();
        Unit const* const found = find(text.data() + from, end, std::identity());
        return found == nullptr ? -1 : found - text.data();
    }

    /// Where the units from \a begin to \a end, each as \a project changes it, hold the pattern first; null
    /// when they do not.
    template <typename Projection>
    [[nodiscard]] Unit const* find(Unit const* begin, Unit const* end, Projection&& project)
    {
        if (m_size == 0) {
            return begin;
        }
        Unit const first = *m_pattern;
        Unit const* at = begin;
        while (true) {
            // Most of a text is passed here, which is what makes short patterns quick.
            while (at != end && project(*at) != first) {
                ++at;
            }
            if (at == end) {
                return nullptr;
            }
            ++at;
            for (qsizetype matched = 1; matched > 0; ++at) {
                if (matched == m_size) {
                    return at - m_size;
                }
                if (at == end) {
                    return nullptr;
                }
                matched = extended(matched, project(*at));
            }
        }
    }

private:
    /// How many units of the pattern are matched once \a unit has followed \a matched ones.
    qsizetype extended(qsizetype matched, Unit unit)
    {
        while (m_pattern[matched] != unit) {
            if (matched == 0) {
                return 0;
            }
            matched = fallbackFrom(matched);
        }
        return matched + 1;
    }

    /// The length of the longest shorter piece that both opens the pattern and ends its first \a matched
    /// units.
    qsizetype fallbackFrom(qsizetype matched)
    {
        // Made when it is first needed: most searches are over before that.
        if (m_fallbacks.isEmpty()) {
            m_fallbacks.resize(m_size);
            m_fallbacks[1] = 0;
            for (qsizetype size = 2; size < m_size; ++size) {
                m_fallbacks[size] = extended(m_fallbacks[size - 1], m_pattern[size - 1]);
            }
        }
        return m_fallbacks[matched];
    }

    Unit const* m_pattern;
    qsizetype m_size;
    QVarLengthArray<qsizetype, 32> m_fallbacks;
};
