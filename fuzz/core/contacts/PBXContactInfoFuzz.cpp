// Directory JSON to a contact, to its record and back: stable once the numbers have passed through their
// stored form, in which an empty number is lost and one with a separator is two.

#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>
#include <datasets/JsonDataSet.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void requireStable(PBXContactInfo const& contact)
{
    PBXContactInfo const stored(contact.serialize());
    PBXContactInfo const again(stored.serialize());
    require(again == stored || (stored.getNumbers().empty() && again == PBXContactInfo()));
    require(again.serialize() == stored.serialize());
    require(contact.getNumbers().empty() == contact.serialize().isEmpty());
    require(stored.getNumber().size() <= contact.getNumber().size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const json(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    PBXContactInfo const contact(QJsonDocument::fromJson(json).object());
    requireStable(contact);
    // The same text taken as a stored record, whose fields may be of any kind.
    requireStable(PBXContactInfo(JsonDataSet::serializeJson(json)));

    NameDataInfo name;
    name.setNameAndInitials(contact.getFirstName(), contact.getLastName());
    require(name.getInitials().size() <= 3);
    require(name.getFullName(false) == name.getFullName(false).trimmed());
    return 0;
}
