#include "Steps.h"

#include "LoopbackServer.h"

#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>
#include <audio/WAVData.h>
#include <audio/wav.h>
#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>
#include <crypto/Crypto.h>
#include <datasets/JsonDataSet.h>
#include <files/FilePaths.h>
#include <network/NetworkUtils.h>
#include <runtime/ReconnectionManager.h>
#include <runtime/TimeTracker.h>
#include <telephony/LineStatus.h>
#include <telephony/PhoneNumberLiterals.h>
#include <text/StringUtils.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlDatabase>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

namespace {

QString first(QList<std::pair<QString, QString>> const& pairs)
{
    return pairs.isEmpty()
               ? QStringLiteral("nothing")
               : QStringLiteral("%1 entries; %2 = %3")
                     .arg(QString::number(pairs.size()), pairs.constFirst().first, pairs.constFirst().second);
}

QList<QJsonObject> readContactObjects(QDir const& folder)
{
    QList<QJsonObject> objects;
    for (QString const& name : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QByteArray const text = JsonDataSet::serializeJsonFromFile(folder.filePath(name));
        QJsonDocument const document = QJsonDocument::fromJson(text);
        if (document.isObject()) {
            objects.append(document.object());
        }
        for (QJsonValue const element : document.array()) {
            objects.append(element.toObject());
        }
    }
    return objects;
}

QString displayName(PBXContactInfo const& contact)
{
    NameDataInfo name;
    name.setNameAndInitials(contact.getFirstName(), contact.getLastName());
    return name.getFullName(true);
}

void showSearch(Report& report, QList<PBXContactInfo> const& contacts, QString const& filter)
{
    constexpr int most = 4;
    int found = 0;
    for (PBXContactInfo const& contact : contacts) {
        QString const name = StringUtils::removeDiacriticalMarks(displayName(contact));
        if (!StringUtils::isFilterMatched(name, filter, true)) {
            continue;
        }
        if (++found <= most) {
            report.call(
                QStringLiteral("wrapSubStringsInHTMLTagExtended"),
                StringUtils::wrapSubStringsInHTMLTagExtended(name, filter, QStringLiteral("b"), true));
        }
    }
    report.call(QStringLiteral("isFilterMatched(name, \"%1\", true)").arg(filter),
                QStringLiteral("%1 of %2 names").arg(found).arg(contacts.size()));
}

/// A recording whose writer was killed before it could fill in the sizes: a tone of \a samples samples.
void writeUnfinishedRecording(QString const& path, int samples, double frequency)
{
    constexpr int rate = 8'000;
    auto const u32 = [](quint32 value) {
        QByteArray bytes(4, '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    auto const u16 = [](quint16 value) {
        QByteArray bytes(2, '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    QByteArray bytes = "RIFF" + u32(0) + "WAVEfmt " + u32(16) + u16(1) + u16(1) + u32(rate) + u32(rate * 2) +
                       u16(2) + u16(16) + "data" + u32(0);
    for (int i = 0; i < samples; ++i) {
        double const phase = 2.0 * std::numbers::pi * frequency * i / rate;
        bytes += u16(static_cast<quint16>(static_cast<qint16>(8'000.0 * std::sin(phase))));
    }
    FilePaths::createBinaryDataFile(path, bytes);
}

/// writePayloadToFile() starts four bytes early, at the size field of its source. In a joined file that field
/// stands in the header already, so each copy starts after it.
bool join(QString const& target, QStringList const& sources)
{
    std::vector<WAVData> recordings;
    for (QString const& source : sources) {
        recordings.emplace_back(source.toStdString());
    }
    WAVData header = recordings.front();
    for (std::size_t i = 1; i < recordings.size(); ++i) {
        if (!header.append(recordings[i])) {
            return false;
        }
    }
    std::ofstream out(target.toStdString(), std::ios::binary);
    header.writeHeaderToFile(out);
    for (WAVData const& recording : recordings) {
        std::ifstream in(recording.path(), std::ios::binary);
        in.seekg(static_cast<std::streamoff>(recording.headerLength()) + 4);
        header.writeBuffer(in, out);
    }
    return static_cast<bool>(out.flush());
}

QString describe(wav::RepairResult const& result)
{
    return result.status == wav::RepairStatus::Repaired    ? QStringLiteral("Repaired")
           : result.status == wav::RepairStatus::NotNeeded ? QStringLiteral("NotNeeded")
                                                           : result.message;
}

QString describe(NetworkUtils::TransferResult const& result)
{
    return QStringLiteral("ok %1, remoteError %2")
        .arg(result.ok ? QStringLiteral("true") : QStringLiteral("false"),
             result.remoteError ? QStringLiteral("true") : QStringLiteral("false"));
}

/// Runs the event loop until \a manager asks for the next attempt; false when its attempts are used up.
bool waitForNextAttempt(ReconnectionManager& manager)
{
    QEventLoop loop;
    bool again = false;
    QObject::connect(&manager, &ReconnectionManager::tryConnectionAgain, &loop, [&] {
        again = true;
        loop.quit();
    });
    QObject::connect(&manager, &ReconnectionManager::connectionAttemptsExhausted, &loop, &QEventLoop::quit);
    manager.onStartTimer();
    loop.exec();
    return again;
}

/// Fetches again and again, as the back-off allows, until it works; the server comes back at the third
/// attempt.
void reconnect(Report& report, LoopbackServer& server, QString const& url, QString const& path)
{
    ReconnectionManager manager;
    bool fetched = false;
    for (int attempt = 1; !fetched && waitForNextAttempt(manager); ++attempt) {
        if (attempt == 3) {
            report.require(QStringLiteral("(the server is started again)"), server.start());
        }
        NetworkUtils::TransferResult const result = NetworkUtils::downloadFile(url, path, nullptr);
        report.call(QStringLiteral("tryConnectionAgain, attempt %1").arg(attempt), describe(result));
        fetched = result.ok;
    }
    manager.onResetTimer();
    report.require(QStringLiteral("connected again"), fetched);
}

} // namespace

void showAssets(Report& report)
{
    report.step(QStringLiteral("The assets database"));
    {
        QSqlDatabase db = ApplicationDataHelpers::getDBConnection();
        report.require(QStringLiteral("getDBConnection().open()"), db.open());
        report.require(QStringLiteral("checkVersion"), ApplicationDataHelpers::checkVersion(db));
        report.require(QStringLiteral("setApplicationName"), ApplicationDataHelpers::setApplicationName(db));
        report.require(QStringLiteral("setManufacturer"), ApplicationDataHelpers::setManufacturer(db));
        QList<EndpointData> const endpoints = ApplicationDataHelpers::getEndpoints(db);
        auto const production =
            std::find_if(endpoints.begin(), endpoints.end(), [](auto const& e) { return e.isProduction(); });
        report.call(QStringLiteral("getEndpoints"),
                    QStringLiteral("%1 endpoints").arg(QString::number(endpoints.size())));
        report.call(QStringLiteral("the production one's getWs"),
                    production == endpoints.end() ? QString() : production->getWs());
        db.close();
    }
    report.call(QStringLiteral("application, organisation"), QCoreApplication::applicationName() +
                                                                 QStringLiteral(", ") +
                                                                 QCoreApplication::organizationName());
    report.call(QStringLiteral("getApplicationData as JSON"),
                JsonDataSet::deserializeJsonData<QString>(ApplicationData::getApplicationData()));
    report.call(QStringLiteral("getFontFamily"), ApplicationDataHelpers::getFontFamily());
    report.call(QStringLiteral("getColorsPalette(light)"),
                first(ApplicationDataHelpers::getColorsPalette(true)));
    report.call(QStringLiteral("getStringsLanguage(Italian)"),
                first(ApplicationDataHelpers::getStringsLanguage(ResourcesDefs::RcsLanguage::Italian)));
}

void showDirectory(Report& report, QDir const& folder)
{
    report.step(QStringLiteral("The directory"));
    QList<PBXContactInfo> contacts;
    int restored = 0;
    for (QJsonObject const& object : readContactObjects(folder)) {
        PBXContactInfo const contact(object);
        QByteArray const stored = JsonDataSet::deserializeJson(contact.serialize());
        restored += PBXContactInfo(JsonDataSet::serializeJson(stored)) == contact ? 1 : 0;
        contacts.append(contact);
    }
    report.require(QStringLiteral("at least 200 contacts"), contacts.size() >= 200);
    report.call(QStringLiteral("PBXContactInfo(json)"),
                QStringLiteral("%1 contacts").arg(QString::number(contacts.size())));
    report.call(QStringLiteral("serialize, write, read, compare"),
                QStringLiteral("%1 the same").arg(QString::number(restored)));
    if (!contacts.isEmpty()) {
        PBXContactInfo const& contact = contacts.constFirst();
        report.call(QStringLiteral("the first: getFullName, initials, getNumber"),
                    displayName(contact) + QStringLiteral(", ") +
                        NameDataInfo::getInitialsFromFullName(contact.getFirstName(), contact.getLastName()) +
                        QStringLiteral(", ") + contact.getNumber());
    }
    showSearch(report, contacts, QStringLiteral("ma r"));
}

void showCall(Report& report)
{
    report.step(QStringLiteral("A call"));
    QString const typed = QStringLiteral("tel:+39 000 555-1234,,42#");
    report.call(QStringLiteral("validatePhoneNumber(\"%1\")").arg(typed),
                PhoneNumberLiterals::validatePhoneNumber(typed, QStringLiteral("+0123456789"), true, true));
    report.call(QStringLiteral("extractDTMFSignalsFromNumber"),
                PhoneNumberLiterals::extractDTMFSignalsFromNumber(QStringLiteral("+390005551234,,42#")));
    report.call(QStringLiteral("comparePhoneNumbers, with and without +39"),
                PhoneNumberLiterals::comparePhoneNumbers(QStringLiteral("+39 000 555 1234"),
                                                         QStringLiteral("000-5551234")));

    // Seconds on the call's own clock.
    struct Event
    {
        LineStatus status;
        int at;
    };
    TimeTracker duration;
    for (Event const& event : {Event{LineStatus::createFree(), 0}, Event{LineStatus::createConnecting(), 1},
                               Event{LineStatus::createRinging(), 3}, Event{LineStatus::createActive(), 11},
                               Event{LineStatus::createTerminated(), 136}}) {
        if (event.status.isActive()) {
            duration.start(event.at);
        } else if (event.status.isTerminated()) {
            duration.pause(event.at);
        }
        report.call(event.status.toString(),
                    StringUtils::getDurationSecondsToString(duration.getDuration(event.at)));
    }
}

void showChat(Report& report)
{
    report.step(QStringLiteral("A chat message"));
    QString const message = QStringLiteral("Minutes < 2 pages: www.example.com/notes,\n"
                                           "or call +390005551234 & ask mario@example.org.");
    report.call(QStringLiteral("htmlfy"), StringUtils::htmlfy(message));
}

void showRecordings(Report& report, QDir const& scratch)
{
    report.step(QStringLiteral("Two recordings that were cut off"));
    QStringList const sources{scratch.filePath(QStringLiteral("first.wav")),
                              scratch.filePath(QStringLiteral("second.wav"))};
    writeUnfinishedRecording(sources.at(0), 8'000, 440.0);
    writeUnfinishedRecording(sources.at(1), 4'000, 660.0);
    for (QString const& source : sources) {
        report.call(QStringLiteral("tryToRepairWavHeaderIfNeeded"),
                    describe(wav::tryToRepairWavHeaderIfNeeded(source.toStdString())));
    }
    QString const target = scratch.filePath(QStringLiteral("joined.wav"));
    report.require(QStringLiteral("append, writeHeaderToFile, writeBuffer"), join(target, sources));
    WAVData const joined(target.toStdString());
    report.call(QStringLiteral("the joined file's dataSize"), qint64(joined.dataSize()));
    report.call(QStringLiteral("tryToRepairWavHeaderIfNeeded"),
                describe(wav::tryToRepairWavHeaderIfNeeded(target.toStdString())));
}

void showSettings(Report& report)
{
    report.step(QStringLiteral("A settings blob"));
    constexpr unsigned long long key = 0x5EED;
    QByteArray const settings = R"({"account":"201","ring":"classic","volume":80})";
    QByteArray damaged = Crypto::encrypt(settings, key, Crypto::ProtectionMode::Hash);
    report.require(QStringLiteral("decrypt(encrypt(settings)) gives them back"),
                   Crypto::decrypt(damaged, key) == settings);
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    report.require(QStringLiteral("decrypt of a damaged message is empty"),
                   Crypto::decrypt(damaged, key).isEmpty());
}

void showTransfer(Report& report, QDir const& scratch)
{
    report.step(QStringLiteral("A file from a server that comes and goes"));
    NetworkUtils::start();
    LoopbackServer server(QByteArray(1'000'000, 'x'));
    report.require(QStringLiteral("(the server is started)"), server.start());
    QString const url = server.url();
    QString const path = scratch.filePath(QStringLiteral("greeting.wav"));
    report.call(QStringLiteral("getFileSize"), qint64(NetworkUtils::getFileSize(url)));

    long long reached = 0;
    NetworkUtils::Operator progress;
    progress.progress = [&reached](long long now, long long) { reached = now; };
    report.call(QStringLiteral("downloadFile"), describe(NetworkUtils::downloadFile(url, path, &progress)));
    report.call(QStringLiteral("the last progress"), qint64(reached));
    report.call(QStringLiteral("getFileSize of the file"), FilePaths::getFileSize(path));

    server.stop();
    report.call(QStringLiteral("downloadFile from the stopped server"),
                describe(NetworkUtils::downloadFile(url, path, nullptr)));
    report.call(QStringLiteral("fileExists"), FilePaths::fileExists(path));
    reconnect(report, server, url, path);
    NetworkUtils::stop();
}
