import QtQml
import QtTest
import Softphone

TestCase {
    name: "Search"

    function init() {
        failOnWarning(/.?/);
    }

    function test_filter() {
        const filter = Search.filter("ros mar");
        compare(filter.isEmpty(), false);
        verify(filter.matches(["Mario Rossi", "Officina"]));
        verify(!filter.matches(["Luca Bruni"]));
        verify(filter.rank(["Ros Mar"]) > filter.rank(["Mario Rossi"]));
        verify(Search.filter(" ").isEmpty());
    }

    function test_hits() {
        const hits = Search.hits(Search.filter("off ros"), ["Mario Rossi", "Officina"]);
        compare(hits, [{field: 0, position: 6, length: 3}, {field: 1, position: 0, length: 3}]);
        compare(Search.hits(Search.filter("x"), ["Mario"]), []);
    }

    function test_marked_data() {
        const span = "<span style=\"background-color:#ff0000\">";
        return [
            {tag: "none", text: "a < b", hits: [], html: "a &lt; b"},
            {tag: "inside", text: "Rossi", hits: [{position: 1, length: 2}], html: "R" + span + "os</span>si"},
            {tag: "escaped", text: "<i>&", hits: [{position: 0, length: 1}, {position: 3, length: 1}],
                html: span + "&lt;</span>i&gt;" + span + "&amp;</span>"},
            {tag: "cut off", text: "Ro…", hits: [{position: 1, length: 9}, {position: 7, length: 2}],
                html: "R" + span + "o…</span>"},
            {tag: "overlapping", text: "abc", hits: [{position: 1, length: 1}, {position: 0, length: 2}],
                html: "a" + span + "b</span>" + span + "c</span>"},
            {tag: "nonsense", text: "abc", hits: [{position: -5, length: -1}, 7, {}], html: "abc"}
        ];
    }

    function test_marked(row) {
        compare(Search.marked(row.text, row.hits, "red"), row.html);
    }
}
