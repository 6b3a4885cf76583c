import QtQml
import QtQuick
import QtTest
import Softphone
import SoftphoneTest

TestCase {
    id: root

    name: "Assets"

    property color textColor: Theme.colors.text
    property string callText: Strings.texts["call.start"]

    function init() {
        failOnWarning(/.?/);
        Desktop.setDark(false);
        Theme.scheme = Theme.Desktop;
        Strings.language = Strings.English;
    }

    function cleanupTestCase() {
        Desktop.setDark(false);
    }

    function test_coloursFollowTheDesktop() {
        compare(Theme.dark, false);
        compare(textColor, "#000000");
        Desktop.setDark(true);
        tryCompare(Theme, "dark", true);
        compare(textColor, "#ffffff");
        Desktop.setDark(false);
        tryCompare(Theme, "dark", false);
        compare(textColor, "#000000");
    }

    function test_schemeOverridesTheDesktop() {
        Theme.scheme = Theme.Dark;
        compare(Theme.dark, true);
        compare(textColor, "#ffffff");
        Desktop.setDark(true);
        Theme.scheme = Theme.Light;
        compare(Theme.dark, false);
        compare(textColor, "#000000");
        Theme.scheme = Theme.Desktop;
        compare(Theme.dark, true);
        compare(textColor, "#ffffff");
    }

    function test_rolesMayHaveTheNamesOfProperties() {
        compare(Theme.colors.dark, "#123456");
        compare(typeof Theme.colors.keys, "function");
        compare(Strings.texts["language"], "Language");
    }

    function test_whatIsNoColourStaysAText() {
        compare(Theme.colors.shadow, "soft");
    }

    function test_whatIsNotThereIsUndefined() {
        compare(Theme.colors["nothing"], undefined);
        compare(Strings.texts["nothing"], undefined);
    }

    function test_scriptsCannotChangeThem() {
        Theme.colors["text"] = "#abcdef";
        compare(Theme.colors.text, "#000000");
        Strings.texts["call.start"] = "Shout";
        compare(Strings.texts["call.start"], "Call");
    }

    function test_textsFollowTheLanguage() {
        compare(callText, "Call");
        Strings.language = Strings.Italian;
        compare(callText, "Chiama");
        compare(Strings.texts["why"], "Perché?");
        Strings.language = Strings.English;
        compare(callText, "Call");
    }

    function test_fontFamily() {
        compare(Theme.fontFamily, "Family %1");
    }
}
