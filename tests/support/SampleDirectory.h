#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <random>

/// A seeded directory of a large company: the same cards for the same count and seed, on every machine.
///
/// Names in ten scripts with marks of all kinds, half of the family names made of syllables so that most
/// words are rare, as in a real directory; three points a card, written as people write them.
class SampleDirectory
{
public:
    explicit SampleDirectory(unsigned int seed = 1)
        : m_engine(seed)
    {
    }

    /// The JSON of \a count cards, indented as a PBX hands it out, about 400 bytes each.
    QByteArray json(int count)
    {
        QByteArray text("[\n");
        for (int card = 0; card < count; ++card) {
            append(text, card);
            text += card + 1 < count ? ",\n" : "\n";
        }
        return text + "]\n";
    }

private:
    struct Names
    {
        QByteArrayList first;
        QByteArrayList last;
    };

    // The engine's numbers are the same everywhere, those of the standard distributions are not.
    int below(int bound) { return static_cast<int>(m_engine() % static_cast<unsigned int>(bound)); }

    QByteArray const& oneOf(QByteArrayList const& list) { return list[below(static_cast<int>(list.size()))]; }

    QByteArray digits(int count)
    {
        QByteArray text;
        while (count-- > 0) {
            text += static_cast<char>('0' + below(10));
        }
        return text;
    }

    static QList<Names> const& scripts()
    {
        static QList<Names> const all{
            {{"Luca", "Niccolò", "Maria", "Anna Maria", "Giulia", "Noè", "Marco", "Francesca", "Alessio",
              "Sara"},
             {"Rossi", "D'Amico", "De Luca", "Bianchi", "Dell'Orto", "Mancini", "Fontana", "Esposito"}},
            {{"Jürgen", "Björn", "Søren", "Åsa", "Łukasz", "Zoë", "Jean-Luc", "Françoise", "Ümit", "José"},
             {"Müller", "Straßer", "O'Brien", "Øvergård", "Wałęsa", "Şahin", "Nuñez", "Lefèvre-Dupont"}},
            {{"Nguyễn Văn", "Trần Thị"}, {"Hạnh", "Phước", "Đức", "Quỳnh"}},
            {{"Сергей", "Андрей", "Ольга", "Алёна"}, {"Чайковский", "Иванова", "Соловьёв", "Щукин"}},
            {{"Γιώργος", "Ελένη", "Νίκος"}, {"Παπαδόπουλος", "Αντωνίου", "Ιωάννου"}},
            {{"محمد", "فاطمة", "أحمد"}, {"الخطيب", "حسن", "المصري"}},
            {{"דוד", "שרה", "יעל"}, {"כהן", "לוי", "מזרחי"}},
            {{"伟", "秀英", "太郎", "花子"}, {"王", "李", "田中", "佐藤"}},
            {{"민준", "서연"}, {"김", "박", "최"}},
            {{"राहुल", "प्रिया"}, {"शर्मा", "सिंह", "गुप्ता"}},
        };
        return all;
    }

    QByteArray syllables(int count)
    {
        static QByteArrayList const all{"ba",  "ber", "ca", "chi", "co",  "da",  "del", "fa", "fer",
                                        "ga",  "gi",  "la", "li",  "lo",  "mar", "mo",  "na", "ni",
                                        "pa",  "per", "ra", "ri",  "ro",  "sa",  "se",  "ta", "ti",
                                        "tor", "va",  "ve", "vi",  "zan", "zi",  "lò",  "né", "rü"};
        QByteArray text;
        while (count-- > 0) {
            text += oneOf(all);
        }
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
        return text;
    }

    QByteArray number()
    {
        switch (below(4)) {
        case 0:
            return "+39 3" + digits(2) + ' ' + digits(7);
        case 1:
            return "+3906" + digits(7);
        case 2:
            return "020 7946 " + digits(4);
        default:
            return "+44 (0)20 " + digits(4) + ' ' + digits(4);
        }
    }

    static void member(QByteArray& text, char const* indent, char const* name, QByteArray const& value,
                       char const* end = ",\n")
    {
        text += indent;
        text += '"';
        text += name;
        text += "\": \"";
        text += value;
        text += '"';
        text += end;
    }

    void point(QByteArray& text, QByteArray const& type, QByteArray const& value, char const* end)
    {
        text += "    {\n";
        member(text, "      ", "type", type);
        member(text, "      ", "value", value, "\n");
        text += "    }";
        text += end;
    }

    void append(QByteArray& text, int card)
    {
        static QByteArrayList const firms{"Officina", "Studio",   "Società",
                                          "Gebrüder", "Ateliers", "Værksted"};
        static QByteArrayList const units{"Sales",       "Support",   "Accounts",
                                          "Entwicklung", "Magazzino", "Qualité"};
        static QByteArrayList const labels{"work", "mobile", "work_mobile", "home", "fax", "switchboard"};
        Names const& names = scripts()[below(20) % static_cast<int>(scripts().size())];
        QByteArray const last = below(2) == 0 ? syllables(2 + below(3)) : oneOf(names.last);
        text += " {\n";
        member(text, "  ", "id", "card-" + QByteArray::number(card));
        member(text, "  ", "firstName", oneOf(names.first));
        member(text, "  ", "lastName", last);
        member(text, "  ", "company", oneOf(firms) + ' ' + syllables(2) + " & " + syllables(2));
        member(text, "  ", "unit", oneOf(units));
        text += "  \"contacts\": [\n";
        point(text, "exten", digits(4), ",\n");
        point(text, oneOf(labels), number(), ",\n");
        if (below(3) == 0) {
            point(text, "email", "person." + QByteArray::number(card) + "@company.example", "\n");
        } else {
            point(text, oneOf(labels), number(), "\n");
        }
        text += "  ]\n }";
    }

    std::mt19937 m_engine;
};
