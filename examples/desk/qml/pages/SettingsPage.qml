import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// The choices of the user, kept at once.
DeskPage {
    id: page

    readonly property var inRome: Numbers.parse("06 1234 5678", "IT")

    title: Strings.texts["settings.title"]

    Scroller {
        anchors.fill: parent
        spacing: Sizes.wide

        Choice {
            width: parent.width
            question: Strings.texts["settings.theme"]
            value: Theme.scheme
            answers: [
                {text: Strings.texts["settings.themeDesktop"], value: Theme.Desktop},
                {text: Strings.texts["settings.themeLight"], value: Theme.Light},
                {text: Strings.texts["settings.themeDark"], value: Theme.Dark}
            ]
            onChosen: value => {
                Theme.scheme = value;
                Settings.keep("scheme", value);
            }
        }

        Choice {
            width: parent.width
            question: Strings.texts["settings.language"]
            value: Strings.language
            answers: [{text: "Italiano", value: Strings.Italian}, {text: "English", value: Strings.English}]
            onChosen: value => {
                Strings.language = value;
                Settings.keep("language", value);
            }
        }

        Choice {
            width: parent.width
            question: Strings.texts["settings.region"]
            value: Desk.region
            answers: [
                {text: "Italia", value: "IT"}, {text: "San Marino", value: "SM"}, {text: "Schweiz", value: "CH"},
                {text: "Deutschland", value: "DE"}, {text: "France", value: "FR"},
                {text: "United Kingdom", value: "GB"}, {text: "United States", value: "US"}
            ]
            onChosen: value => {
                Desk.region = value;
                Settings.keep("region", value);
            }
        }

        Label {
            width: parent.width
            text: Strings.texts["settings.regionExample"].arg(Desk.region === "IT" ? page.inRome.national
                                                                                   : page.inRome.international)
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            color: Theme.colors.textSecondary
        }

        ListEntry {
            width: parent.width
            glyph: "settings"
            good: Settings.whole
            name: Strings.texts["settings.kept"]
            about: Settings.bytes === 0 ? Strings.texts["settings.nothingKept"]
                                        : Strings.texts["settings.keptBytes"].arg(Settings.bytes)

            Action {
                text: Strings.texts["settings.readBack"]
                enabled: Settings.bytes > 0
                onClicked: {
                    Settings.read();
                    Theme.scheme = Settings.value("scheme", Theme.scheme);
                    Strings.language = Settings.value("language", Strings.language);
                    Desk.region = Settings.value("region", Desk.region);
                }
            }
        }
    }
}
