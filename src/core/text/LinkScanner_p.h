#pragma once

#include <QStringView>
#include <array>
#include <optional>

/// Finds the addresses that chat text links, from the start of a text to its end.
///
/// What counts as an address is defined by a regular expression that stands in the tests (LinkOracle); the
/// scanner finds exactly its successive matches. It is not run here because it takes cubic time on text such
/// as "a-a-a-a-" and gives up on long input, and the text comes from strangers. Unlike the engine the scanner
/// has no limits, and takes a lone surrogate as a character that belongs to no word.
///
/// Every match starts inside a run of e-mail characters that holds or precedes one of a few signs ('@', ':',
/// a dot or digits in a row), so the scanner looks for these and tries no position in all the other words. It
/// reads each character a bounded number of times: what it finds out about a run, a host label or a chain of
/// labels is kept until the scan has passed it. It keeps positions only and allocates nothing.
class LinkScanner
{
public:
    /// The schemes of the URLs that are linked, in lower case; each counts in all upper case too.
    static constexpr std::array<QStringView, 5> schemes = {u"http", u"https", u"smb", u"ftp", u"file"};

    /// Where one address stands: the position of its first character, and that after its last.
    struct Link
    {
        qsizetype begin;
        qsizetype end;
    };

    /// Scans \a text, which must outlive the scanner.
    explicit LinkScanner(QStringView text)
        : m_hosts(text)
        , m_mailHosts(text)
        , m_text(text)
    {
    }

    /// The next address, or nothing when there is none left.
    std::optional<Link> next();

private:
    using End = std::optional<qsizetype>;

    /// Finds where a host name ends that starts at a given position. Positions must not decrease from call to
    /// call; what was read is remembered, so that all calls together read the text a bounded number of times.
    class HostReader
    {
    public:
        explicit HostReader(QStringView text)
            : m_text(text)
        {
        }

        /// The end of the longest host name that starts at \a begin.
        End endOf(qsizetype begin);

    private:
        void readLabel(qsizetype begin);
        void readChain(qsizetype firstDot);

        QStringView m_text;
        // The label last read: where it ends, and its last letter.
        qsizetype m_labelEnd = -1;
        qsizetype m_lastLetter = -1;
        // The chain of labels last read: its last dot that a label precedes, and where the last of its labels
        // that may close a host name begins and where the letters of that label end.
        qsizetype m_lastDot = -1;
        qsizetype m_closingBegin = -1;
        qsizetype m_closingEnd = -1;
    };

    bool findRun();
    bool announcesLink(qsizetype sign, qsizetype after) const;
    void readRun(qsizetype sign);
    End endOfLinkAt(qsizetype begin);
    End endOfBoundedLinkAt(qsizetype begin);
    End endOfUrlAt(qsizetype begin) const;
    End endOfIpAddressAt(qsizetype begin) const;
    End endOfPhoneNumberAt(qsizetype begin) const;

    HostReader m_hosts;
    HostReader m_mailHosts;
    QStringView m_text;
    qsizetype m_position = 0;
    // The run of e-mail characters that is being scanned: its end, where the host name ends that follows its
    // '@', if there is one, and whether "://" follows.
    qsizetype m_runEnd = 0;
    End m_mailHostEnd;
    bool m_schemeEndFollows = false;
};
