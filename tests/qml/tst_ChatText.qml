import QtTest
import Softphone

TestCase {
    name: "ChatText"

    function init() {
        failOnWarning(/.?/);
    }

    function test_linkedHtml() {
        compare(ChatText.linkedHtml("see <www.example.com>"),
            'see &lt;<a href="https://www.example.com">www.example.com</a>&gt;');
        compare(ChatText.linkedHtml("www.example.com", {bareHosts: false}), "www.example.com");
    }

    function test_findLinks() {
        const text = "write to info@example.com or call +39 06 1234567";
        const links = ChatText.findLinks(text);
        compare(links.length, 2);
        compare(links[0].kind, Softphone.LinkKind.Email);
        compare(text.substr(links[0].position, links[0].length), "info@example.com");
        compare(String(links[1].target), "tel:+39061234567");
        compare(ChatText.findLinks(text, {schemes: ["tel"]}).length, 1);
        compare(ChatText.findLinks(text, {phoneNumbers: false}).length, 1);
        compare(String(ChatText.findLinks("call 06 1234567", {region: "IT"})[0].target), "tel:+39061234567");
    }

    function test_wrongRulesThrow_data() {
        return [
            {tag: "unknown name", rules: {barehosts: true}, message: '"barehosts"'},
            {tag: "wrong kind", rules: {schemes: {}}, message: '"schemes"'}
        ];
    }

    function test_wrongRulesThrow(row) {
        let message = "";
        try {
            ChatText.findLinks("text", row.rules);
        } catch (error) {
            verify(error instanceof TypeError);
            message = error.message;
        }
        verify(message.includes(row.message), message);
    }
}
