#include "CallerIndex_p.h"

#include "DirectoryStore_p.h"

#include <algorithm>

namespace Softphone {

namespace {

constexpr qsizetype tailLength =
    7; // fewer digits lead to too many cards, and national numbers may have no more
constexpr quint32 tailBound = 10'000'000;
/// Numbers with letters, an extension or tones: their last digits may differ from those that are dialled.
constexpr quint32 oddTail = 0xffffffff;
constexpr std::size_t mostPending = 256;

/// The last digits of \a digits, and how many there are if they are few.
quint32 tailOf(QStringView digits)
{
    quint32 tail = 0;
    for (QChar const digit : digits.last(std::min(digits.size(), tailLength))) {
        tail = tail * 10 + static_cast<quint32>(digit.digitValue());
    }
    return digits.size() < tailLength ? tail + static_cast<quint32>(digits.size() + 1) * tailBound : tail;
}

bool isOdd(QChar character)
{
    return character.isLetter() || character == u',' || character == u';' || character == u'#';
}

quint32 tailOfText(QString const& text)
{
    QString digits;
    for (QChar const character : text) {
        if (isOdd(character) || character.isSurrogate()) {
            return oddTail;
        }
        if (character.digitValue() >= 0) {
            digits += character;
        }
    }
    return tailOf(digits);
}

/// The last digits under which \a e164, digits with the country code in front or those of a short number, may
/// stand.
QList<quint32> tailsOf(QString const& e164)
{
    QStringView const digits = QStringView(e164).sliced(e164.startsWith(u'+') ? 1 : 0);
    QList<quint32> tails{oddTail, tailOf(digits)};
    if (digits.size() >= tailLength + 3 || !e164.startsWith(u'+')) {
        return tails;
    }
    // Without a country code of one to three digits these may be fewer than are looked at, with a zero or
    // not.
    for (qsizetype code = 1; code <= 3 && code < digits.size(); ++code) {
        QString const national = digits.sliced(code).toString();
        tails.append({tailOf(national), tailOf(QString(u'0' + national))});
    }
    return tails;
}

} // namespace

void CallerIndex::add(int number, ContactCard const&)
{
    if (!m_complete) {
        return;
    }
    m_pending.push_back(number);
    if (m_pending.size() > mostPending) {
        m_pending.clear();
        m_complete = false;
    }
}

void CallerIndex::setRegion(QString const& region)
{
    m_region = region;
    m_parsed.clear();
}

void CallerIndex::addEntries(int number, ContactCard const& card)
{
    for (int point = 0; ContactPoint const& of : card.points) {
        if (of.type != ContactReferenceType::Email) {
            m_entries.push_back({tailOfText(of.value), number, point});
        }
        ++point;
    }
}

void CallerIndex::update(DirectoryStore const& store)
{
    if (!m_complete) {
        m_entries.clear();
        for (int const card : store.order()) {
            addEntries(card, store.card(card));
        }
        std::sort(m_entries.begin(), m_entries.end());
        m_parsed.clear();
        m_complete = true;
    } else if (!m_pending.empty()) {
        auto const old = static_cast<std::ptrdiff_t>(m_entries.size());
        for (int const card : m_pending) {
            addEntries(card, store.card(card));
        }
        std::sort(m_entries.begin() + old, m_entries.end());
        std::inplace_merge(m_entries.begin(), m_entries.begin() + old, m_entries.end());
        m_entries.erase(std::unique(m_entries.begin(), m_entries.end()), m_entries.end());
        // Those that are gone are left out the next time.
        m_complete = m_entries.size() <= 8 * static_cast<std::size_t>(store.count()) + mostPending;
    }
    m_pending.clear();
}

bool CallerIndex::has(ContactCard const& card, int point, PhoneNumber const& number)
{
    // The card may have changed since.
    if (point >= card.points.size() || card.points[point].type == ContactReferenceType::Email) {
        return false;
    }
    QString const& text = card.points[point].value;
    auto found = m_parsed.constFind(text);
    if (found == m_parsed.cend()) {
        found = m_parsed.insert(text, PhoneNumber::parse(text, m_region));
    }
    return *found == number;
}

int CallerIndex::find(QString const& number, DirectoryStore const& store)
{
    std::optional<PhoneNumber> const wanted = PhoneNumber::parse(number, m_region);
    if (!wanted) {
        return -1;
    }
    update(store);
    int first = -1;
    for (quint32 const tail : tailsOf(wanted->e164())) {
        auto entry = std::ranges::lower_bound(m_entries, tail, {}, &Entry::tail);
        for (; entry != m_entries.end() && entry->tail == tail; ++entry) {
            // A card that comes later need not be looked at, and one that is gone must not.
            int const position = store.position(entry->card);
            bool const isCandidate = position >= 0 && (first < 0 || position < store.position(first));
            if (isCandidate && has(store.card(entry->card), entry->point, *wanted)) {
                first = entry->card;
            }
        }
    }
    return first;
}

} // namespace Softphone
