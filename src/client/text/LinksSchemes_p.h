#pragma once

#include <QLatin1String>
#include <algorithm>
#include <array>

namespace Softphone::Addresses {

/// The schemes that some program opens without "//". Any other word in front of a colon is a label, as in
/// "Site:www.example.com", unless "//" follows.
inline constexpr std::array knownSchemes = {
    "about",   "blob",     "callto",      "chrome", "cid",      "data",   "facetime", "feed",
    "file",    "ftp",      "ftps",        "geo",    "git",      "gopher", "h323",     "http",
    "https",   "im",       "imap",        "intent", "irc",      "ircs",   "jar",      "javascript",
    "ldap",    "ldaps",    "livescript",  "magnet", "mailto",   "mid",    "mocha",    "ms-settings",
    "msteams", "news",     "nfs",         "nntp",   "resource", "rtsp",   "sftp",     "shell",
    "sip",     "sips",     "skype",       "slack",  "smb",      "sms",    "smsto",    "ssh",
    "steam",   "stun",     "stuns",       "svn",    "tel",      "telnet", "turn",     "turns",
    "urn",     "vbscript", "view-source", "vnc",    "whatsapp", "ws",     "wss",      "xmpp",
    "zoommtg",
};

[[nodiscard]] inline bool isKnownScheme(QStringView scheme)
{
    return std::ranges::any_of(knownSchemes, [scheme](char const* known) {
        return scheme.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
    });
}

} // namespace Softphone::Addresses
