// A caller outside the project: includes from many folders, and links what it calls.

#include <audio/WAVData.h>
#include <contacts/PBXContactInfo.h>
#include <crypto/Crypto.h>
#include <datasets/JsonDataSet.h>
#include <files/FilePaths.h>
#include <network/NetworkUtils.h>
#include <runtime/ReconnectionManager.h>
#include <runtime/UniqueId.h>
#include <softphonecore_version.h>
#include <telephony/LineStatus.h>
#include <telephony/PhoneNumberLiterals.h>
#include <text/StringUtils.h>

#include <QCoreApplication>
#include <cstdio>

static_assert(SOFTPHONECORE_VERSION >= SOFTPHONECORE_VERSION_CHECK(1, 0, 0) &&
              SOFTPHONECORE_VERSION < SOFTPHONECORE_VERSION_CHECK(SOFTPHONECORE_VERSION_MAJOR + 1, 0, 0));

namespace {

int failures = 0;

void check(char const* what, bool holds)
{
    if (!holds) {
        std::printf("wrong: %s\n", what);
        ++failures;
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);

    DataSets::DataSet record = DataSets::DataSet::createObject();
    record.setValue(QStringLiteral("line"), 101);
    check("record to JSON", JsonDataSet::deserializeJson(record) == R"({"line":101})");

    PBXContactInfo contact;
    contact.setLastName(QStringLiteral("Rossi"));
    contact.setNumbers(QStringLiteral("102;101"));
    check("contact to record and back", PBXContactInfo(contact.serialize()) == contact);

    check("emergency number", PhoneNumberLiterals::EMERGENCY_NUMBERS.count(QStringLiteral("112")) == 1);
    check("line status", LineStatus::createActive().toString() == QStringLiteral("Active"));
    check("escaping", StringUtils::sanitizeHTMLCharacters(QStringLiteral("a<b")) == QStringLiteral("a&lt;b"));
    check("paths", FilePaths::isNetworkPath(QStringLiteral("//server/share")));
    check("identifiers", UniqueId::createUUID().size() == 36);
    check("missing recording", !WAVData("/nonexistent.wav").hasHeader());

    QByteArray const secret = Crypto::encrypt("settings", 7, Crypto::ProtectionMode::Checksum);
    check("encryption", Crypto::decrypt(secret, 7) == "settings");

    NetworkUtils::start();
    check("malformed address", NetworkUtils::getFileSize(QStringLiteral("no such://")) == -1);
    NetworkUtils::stop();

    check("reconnection", !ReconnectionManager().isActive());
    return failures;
}
