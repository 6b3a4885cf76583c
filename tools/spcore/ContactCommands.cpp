#include "Commands.h"
#include "Console.h"

#include <client/ContactDirectory.h>
#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>
#include <datasets/JsonDataSet.h>

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
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

ExitCode show(QCommandLineParser const& parser)
{
    QString const standardInput = QStringLiteral("-");
    QStringList files = parser.positionalArguments();
    if (files.isEmpty()) {
        files.append(standardInput);
    }
    QList<PBXContactInfo> contacts;
    for (QString const& file : files) {
        QString const place = file == standardInput ? QStringLiteral("standard input") : file;
        std::optional<QByteArray> const json = Console::readInput(file);
        if (!json) {
            return failed(ExitCode::Failure, QStringLiteral("cannot read ") + place);
        }
        std::optional<QList<PBXContactInfo>> const found = parseContacts(*json);
        if (!found) {
            return failed(ExitCode::Failure,
                          place + QStringLiteral(" is not the JSON of a directory contact"));
        }
        contacts += *found;
    }
    bool first = true;
    for (PBXContactInfo const& contact : contacts) {
        if (parser.isSet(optionRecord())) {
            Console::printBytes(JsonDataSet::deserializeJson(contact.serialize()) + '\n');
            continue;
        }
        if (!std::exchange(first, false)) {
            Console::print(QString());
        }
        printForPerson(contact);
    }
    return ExitCode::Success;
}

QString optionJson()
{
    return QStringLiteral("json");
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
    QString const place = file == QStringLiteral("-") ? QStringLiteral("standard input") : file;
    std::optional<QByteArray> const json = Console::readInput(file);
    if (!json) {
        Console::printError(QStringLiteral("cannot read ") + place);
        return false;
    }
    Softphone::ContactDirectory::LoadReport const report = directory.load(*json);
    for (Softphone::ContactDirectory::LoadError const& error : report.errors) {
        Console::printError(place + QStringLiteral(":%1:%2: ").arg(error.line).arg(error.column) +
                            error.text);
    }
    return report.errors.isEmpty();
}

ExitCode find(QCommandLineParser const& parser)
{
    QStringList files = parser.positionalArguments().mid(1);
    if (files.isEmpty()) {
        files.append(QStringLiteral("-"));
    }
    Softphone::ContactDirectory directory;
    bool good = true;
    for (QString const& file : files) {
        good = loadContacts(directory, file) && good;
    }
    directory.setFilter(parser.positionalArguments().constFirst());
    for (int row = 0; row < directory.rowCount(); ++row) {
        auto const card =
            directory.index(row).data(Softphone::ContactDirectory::CardRole).value<Softphone::ContactCard>();
        if (parser.isSet(optionJson())) {
            Console::printBytes(QJsonDocument(card.toJson()).toJson(QJsonDocument::Compact) + '\n');
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
         {{{optionRecord(), QStringLiteral("json")},
           QStringLiteral("Prints the record that is stored for each contact, as one line of JSON")}},
         show},
        {QStringLiteral("contact find"),
         QStringLiteral(
             "Finds contacts as the client library does: labels and addresses too, best match first"),
         {{QStringLiteral("WORDS"),
           QStringLiteral("What a person would type: beginnings of words, or part of a number")},
          {QStringLiteral("[FILE...]"),
           QStringLiteral(
               "Files with one contact or an array of them; standard input without one, or for -")}},
         {{optionJson(), QStringLiteral("Prints each contact as one line of JSON, with its id")}},
         find},
    };
}
