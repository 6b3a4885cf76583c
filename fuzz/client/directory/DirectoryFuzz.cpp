// A directory's JSON: what is wrong lies within the text, a second load changes nothing, what is saved gives
// the same cards, and text that Qt's parser takes gives as many cards as it has different ones.

#include <client/ContactDirectory.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdint>
#include <cstdlib>

using Softphone::ContactCard;
using Softphone::ContactDirectory;

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

QHash<QString, ContactCard> cardsOf(ContactDirectory const& directory)
{
    QHash<QString, ContactCard> cards;
    for (int row = 0; row < directory.rowCount(); ++row) {
        auto const card = directory.index(row).data(ContactDirectory::CardRole).value<ContactCard>();
        require(directory.row(card.id) == row);
        cards.insert(card.id, card);
    }
    return cards;
}

void requirePlacesInside(ContactDirectory::LoadReport const& report, QByteArray const& json)
{
    auto const lines = json.split('\n');
    for (ContactDirectory::LoadError const& error : report.errors) {
        require(error.line >= 1 && error.line <= lines.size());
        require(error.column >= 1 && error.column <= lines[error.line - 1].size() + 1);
        require(!error.text.isEmpty());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const json(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    ContactDirectory directory;
    ContactDirectory::LoadReport const report = directory.load(json);
    requirePlacesInside(report, json);
    require(directory.total() == report.added);
    QHash<QString, ContactCard> const cards = cardsOf(directory);
    require(cards.size() == report.added);
    require(directory.load(json).added == 0);

    QJsonDocument const document = QJsonDocument::fromJson(json);
    if (document.isObject()) {
        require(report.added == 1 || !report.errors.isEmpty());
    }

    static QTemporaryDir const folder;
    QString const path = folder.filePath(QStringLiteral("saved"));
    require(directory.saveFile(path));
    ContactDirectory again;
    require(again.loadFile(path).errors.isEmpty());
    require(cardsOf(again) == cardsOf(directory));

    directory.setFilter(QString::fromUtf8(json.right(8)));
    for (int row = 0; row < directory.rowCount(); ++row) {
        directory.index(row).data(ContactDirectory::NumberHitsRole);
        directory.index(row).data(ContactDirectory::DepartmentHitsRole);
    }
    return 0;
}
