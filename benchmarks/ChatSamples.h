#pragma once

#include <QString>

/// Short messages as people write them; two hold an address, and \a request is what one of them asks for.
inline QString chatText(QString const& request)
{
    return QStringLiteral(
               "Hi Anna, are you free for a call at 10:30? The customer from Turin rang twice.\n"
               "Sure - give me five minutes, I am still in the other meeting (it is nearly over).\n"
               "Great! The agenda is at https://intranet.example.com/meetings/2024-06-07?room=12, page 3.\n"
               "I can't open it... could you send it to anna.rossi@example.com, please?\n"
               "Done. If the line drops, ") +
           request + QStringLiteral(".\nThanks; talk to you soon :-)\n");
}

inline QString textWithoutLinks()
{
    return QStringLiteral(
        "The meeting has been moved to Thursday, because half of the team is out of the office. "
        "Please tell me before noon whether that suits you; otherwise we shall look for another "
        "day. Room 12 is free from 9:30 to 11:00, and there is coffee.\n");
}

inline QString shortMessage()
{
    return QStringLiteral("ok, see you at www.example.com at ten");
}
