#pragma once

#include <softphonecore_export.h>

#include <QString>

/// Makes display HTML of plain message text.
///
/// The text is taken as it stands: escape what is special in HTML first (StringUtils::htmlfy does both).
/// All operations run in time linear in the text, whatever the text holds, and may be called from any
/// thread.
class SOFTPHONECORE_EXPORT HTMLHelpers
{
public:
    HTMLHelpers() = delete;

    /// Puts an anchor around every address in \a text.
    ///
    /// Addresses are e-mail addresses, host names whose last label has two letters or more (a file name such
    /// as "notes.txt" is one too), URLs with the scheme http, https, smb, ftp or file in all lower or all
    /// upper case, IPv4 addresses, and phone numbers of nine digits or more. Letters and digits are those of
    /// ASCII. A host may be followed by "/" or ":" and everything up to the next white space. An IPv4 address
    /// needs no word boundary before it: in "999.1.1.1" it is "99.1.1.1".
    ///
    /// The address is both the target and the text of its anchor, without a scheme added and without
    /// escaping. Full stops, semicolons, commas, exclamation marks and closing brackets that end an address
    /// stay outside the anchor, after it.
    ///
    /// \return the text with its anchors; \a text itself when it holds no address
    ///
    /// Example: "see www.example.com." becomes
    /// `see <a href="www.example.com">www.example.com</a>.`
    [[nodiscard]] static QString processLinks(QString const& text);

    /// Links the addresses of each line of \a text as processLinks() does and puts `<br>` in the place of
    /// each line feed. A carriage return before a line feed stays in its line.
    ///
    /// \return the HTML, without a paragraph element around it
    ///
    /// Example: "a\nb" becomes `a<br>b`.
    [[nodiscard]] static QString generateParagraphs(QString const& text);
};
