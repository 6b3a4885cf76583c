#include "GeneratedCards.h"

#include <QFile>
#include <QThread>
#include <array>

namespace {

constexpr std::array firstNames = {
    "Ada",     "Bruno", "Chiara", "Dario", "Elisa", "Fabio", "Giorgia", "Hugo",  "Ilaria",   "Jürgen",
    "Katia",   "Luca",  "Mario",  "Nadia", "Óscar", "Paola", "Quirino", "Rita",  "Søren",    "Tilda",
    "Umberto", "Viola", "Walter", "Xenia", "Yves",  "Zoe",   "Agnese",  "Björn", "Carlotta", "Delia"};
constexpr std::array stems = {"Alt", "Bell", "Cant", "Dor",  "Ferr", "Gall",   "Lomb", "Mart", "Mor", "Nov",
                              "Ors", "Pell", "Riv",  "Salv", "Tass", "Ventur", "Zan",  "Mül",  "Côt", "Pavl"};
constexpr std::array endings = {"ini", "ari", "oni", "etti", "ese", "ucci", "a", "otti"};
constexpr std::array initials = {"A", "B", "C", "D", "E", "F", "G", "L", "M", "N", "P",
                                 "R", "S", "T", "V", "Z", "I", "O", "U", "H", "K"};
constexpr std::array companies = {"Fornace Lunga", "Vela & Figli",   "Cantieri Arno",  "Studio Melograno",
                                  "Orto Urbano",   "Nordlicht GmbH", "Tipografia Sole"};
constexpr std::array departments = {"Sales", "Support", "Accounts", "Warehouse"};

/// As many as there are different names, about a hundred thousand.
constexpr std::size_t count = firstNames.size() * stems.size() * endings.size() * initials.size();

/// One of \a names by \a number, from which it takes what it used.
template <std::size_t size>
constexpr char const* pick(std::array<char const*, size> const& names, std::size_t& number)
{
    char const* const name = names.at(number % size);
    number /= size;
    return name;
}

QByteArray card(std::size_t number)
{
    QByteArray const digits = QByteArray::number(number).rightJustified(6, '0');
    std::size_t rest = number;
    QByteArray const firstName = pick(firstNames, rest);
    QByteArray const stem = pick(stems, rest);
    QByteArray const ending = pick(endings, rest);
    QByteArray const initial = pick(initials, rest);
    rest = number;
    QByteArray const company = pick(companies, rest);
    QByteArray const department = pick(departments, rest);
    return R"({"id":"g)" + digits + R"(","firstName":")" + firstName + ' ' + initial + R"(.","lastName":")" +
           stem + ending + R"(","company":")" + company + R"(","unit":")" + department +
           R"(","contacts":[{"type":"work","value":"+3906)" + digits + R"(00"},{"type":"email","value":"p)" +
           digits + R"(@example.com"}]})";
}

void writeCards(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    file.write("[");
    for (std::size_t number = 0; number < count; ++number) {
        file.write((number == 0 ? QByteArray() : QByteArray(",\n")) + card(number));
    }
    file.write("]");
}

} // namespace

void GeneratedCards::write()
{
    QString const path = m_folder.filePath(QStringLiteral("generated.json"));
    QThread* const writer = QThread::create([path] { writeCards(path); });
    writer->setParent(this);
    connect(writer, &QThread::finished, this, [this, path, writer] {
        writer->deleteLater();
        Q_EMIT written(QUrl::fromLocalFile(path));
    });
    writer->start(QThread::LowPriority);
}
