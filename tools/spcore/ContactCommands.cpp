#include "Commands.h"
#include "Console.h"
#include "InputFile.h"

#include <client/ContactDirectory.h>
#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>
#include <datasets/JsonDataSet.h>

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <optional>
#include <utility>

namespace {

QString optionRecord()
{
    return QStringLiteral("record");
}

void printField(QString const& label, QString const& value)
{
    constexpr qsizetype labelWidth = 12;
    if (!value.isEmpty()) {
        Console::print(label.leftJustified(labelWidth) + Console::harmless(value));
    }
}

void printForPerson(PBXContactInfo const& contact)
{
    NameDataInfo name;
    name.setNameAndInitials(contact.getFirstName(), contact.getLastName());
    QString const fullName = name.getFullName(true);
    Console::print(
        Console::bold(fullName.isEmpty() ? QStringLiteral("(no name)") : Console::harmless(fullName)));
    printField(QStringLiteral("initials"), name.getInitials());
    printField(QStringLiteral("company"), contact.getCompany());
    printField(QStringLiteral("department"), contact.getDepartment());
    for (QString const& number : contact.getNumbers()) {
        printField(QStringLiteral("number"), number);
    }
    if (contact.getNumbers().empty()) {
        printField(QStringLiteral("number"), QStringLiteral("none, so that the contact is not stored"));
    }
}

/// The directory entries in \a json, one object or an array of them; empty when it is neither.
std::optional<QList<PBXContactInfo>> parseContacts(QByteArray const& json)
{
    QJsonDocument const document = QJsonDocument::fromJson(json);
    if (document.isNull()) {
        return std::nullopt;
    }
    QJsonArray const entries = document.isObject() ? QJsonArray{document.object()} : document.array();
    QList<PBXContactInfo> contacts;
    for (QJsonValue const entry : entries) {
        if (!entry.isObject()) {
            return std::nullopt;
        }
        contacts.append(PBXContactInfo(entry.toObject()));
    }
    return contacts;
}

QString text(Softphone::ContactDirectory::LoadError const& error)
{
    return QStringLiteral("line %1, column %2: %3")
        .arg(QString::number(error.line), QString::number(error.column), error.text);
}

/// Where \a json, which is not the JSON of contacts, goes wrong.
QString reasonOf(QByteArray const& json)
{
    auto const errors = Softphone::ContactDirectory().load(json).errors;
    return errors.isEmpty() ? QStringLiteral("it is not the JSON of a directory contact")
                            : text(errors.constFirst());
}

QStringList filesOf(QStringList const& named)
{
    return named.isEmpty() ? QStringList(QStringLiteral("-")) : named;
}

ExitCode show(QCommandLineParser const& parser)
{
    ExitCode result = ExitCode::Success;
    QList<PBXContactInfo> contacts;
    for (QString const& file : filesOf(parser.positionalArguments())) {
        std::optional<QByteArray> const json = Console::readInput(file);
        std::optional<QList<PBXContactInfo>> const found = json ? parseContacts(*json) : std::nullopt;
        if (found) {
            contacts += *found;
            continue;
        }
        result = ExitCode::Failure;
        if (json) {
            failed(result, InputFile::shown(file), reasonOf(*json));
        }
    }
    bool first = true;
    for (PBXContactInfo const& contact : contacts) {
        if (wantsJson(parser) || parser.isSet(optionRecord())) {
            Console::printBytes(JsonDataSet::deserializeJson(contact.serialize()) + '\n');
            continue;
        }
        if (!std::exchange(first, false)) {
            Console::print(QString());
        }
        printForPerson(contact);
    }
    return result;
}

void printCard(Softphone::ContactCard const& card)
{
    Console::print(Console::bold(Console::harmless(card.displayName())));
    printField(QStringLiteral("company"), card.company);
    printField(QStringLiteral("department"), card.department);
    for (Softphone::ContactPoint const& point : card.points) {
        printField(Console::harmless(point.label), point.value);
    }
}

/// Loads the file \a file and tells what is wrong with it; whether nothing is.
bool loadContacts(Softphone::ContactDirectory& directory, QString const& file)
{
    std::optional<QByteArray> const json = Console::readInput(file);
    if (!json) {
        return false;
    }
    Softphone::ContactDirectory::LoadReport const report = directory.load(*json);
    for (Softphone::ContactDirectory::LoadError const& error : report.errors) {
        failed(ExitCode::Failure, InputFile::shown(file), text(error));
    }
    return report.errors.isEmpty();
}

ExitCode find(QCommandLineParser const& parser)
{
    Softphone::ContactDirectory directory;
    bool good = true;
    for (QString const& file : filesOf(parser.positionalArguments().mid(1))) {
        good = loadContacts(directory, file) && good;
    }
    directory.setFilter(parser.positionalArguments().constFirst());
    for (int row = 0; row < directory.rowCount(); ++row) {
        auto const card =
            directory.index(row).data(Softphone::ContactDirectory::CardRole).value<Softphone::ContactCard>();
        if (wantsJson(parser)) {
            Console::printJson(card.toJson());
            continue;
        }
        if (row > 0) {
            Console::print(QString());
        }
        printCard(card);
    }
    return good ? ExitCode::Success : ExitCode::Failure;
}

} // namespace

QList<Command> contactCommands()
{
    return {
        {QStringLiteral("contact"),
         QStringLiteral("Shows the contacts of a PBX directory, given as JSON, as the core reads them"),
         {{QStringLiteral("[FILE...]"),
           QStringLiteral(
               "Files with one contact or an array of them; standard input without one, or for -")}},
         {{optionRecord(),
           QStringLiteral("Prints the record that is stored for each contact, as JSON does")}},
         show,
         QStringLiteral("{firstName, lastName, number, company, department} for each contact, as it is "
                        "stored; {} for one without numbers"),
         QStringLiteral("contact directory.json")},
        {QStringLiteral("contact find"),
         QStringLiteral(
             "Finds contacts as the client library does: labels and addresses too, best match first"),
         {{QStringLiteral("WORDS"),
           QStringLiteral("What a person would type: beginnings of words, or part of a number")},
          {QStringLiteral("[FILE...]"),
           QStringLiteral(
               "Files with one contact or an array of them; standard input without one, or for -")}},
         {},
         find,
         QStringLiteral("{id, firstName, lastName, company, unit, contacts: [{type, value}...]} for each "
                        "contact"),
         QStringLiteral("contact find 'mar ros' directory.json")},
    };
}
