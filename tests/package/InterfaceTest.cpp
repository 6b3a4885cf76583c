// The signatures that callers are compiled against. This file tests by compiling: a change here is a
// change for every caller and needs a new major version of the library.

#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>
#include <appdata/EndpointData.h>
#include <appdata/ResourcesDefs.h>
#include <audio/WAVData.h>
#include <audio/wav.h>
#include <contacts/ISerializable.h>
#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>
#include <crypto/Crypto.h>
#include <datasets/DataSets.h>
#include <datasets/JsonDataSet.h>
#include <datasets/MultiType.h>
#include <files/FilePaths.h>
#include <files/ImageUtils.h>
#include <files/UrlHelpers.h>
#include <network/NetworkUtils.h>
#include <runtime/AsyncCommandTicket.h>
#include <runtime/AsyncCommandsContainter.h>
#include <runtime/ConstantSequenceGenerator.h>
#include <runtime/LimitedFibonacciGenerator.h>
#include <runtime/MathUtils.h>
#include <runtime/ReconnectionManager.h>
#include <runtime/SequenceGenerator.h>
#include <runtime/SingleInstanceGuard.h>
#include <runtime/SystemInfo.h>
#include <runtime/ThreadUtils.h>
#include <runtime/TimeTracker.h>
#include <runtime/UniqueId.h>
#include <telephony/DTMFHelpers.h>
#include <telephony/LineStatus.h>
#include <telephony/PhoneNumberLiterals.h>
#include <telephony/PhoneUtils.h>
#include <text/HTMLHelpers.h>
#include <text/StringUtils.h>
#include <text/SubstringWrapper.h>

#include <QDir>
#include <QFile>
#include <QHttpPart>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QMetaMethod>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <type_traits>
#include <vector>

namespace {

using Record = DataSets::Impl::DataSetImpl;
using RecordPointer = std::shared_ptr<Record>;
using Texts = QList<QString>;
using TextPairs = QList<std::pair<QString, QString>>;

/// Takes a static function, or that overload of it, with exactly this signature.
template <typename Signature>
constexpr bool offers(Signature*)
{
    return true;
}

/// Takes a member function, or that overload of it, with exactly this signature.
template <typename Class, typename Signature>
constexpr bool offers(Signature Class::*)
{
    return true;
}

/// Takes static functions that all have exactly this signature.
template <typename Signature, typename... Functions>
constexpr bool areAll(Functions*...)
{
    return (std::is_same_v<Signature, Functions> && ...);
}

template <typename Enumerator>
constexpr auto number(Enumerator value)
{
    return static_cast<std::underlying_type_t<Enumerator>>(value);
}

template <typename T>
constexpr bool holdsType()
{
    return std::is_constructible_v<MultiType, T const&> &&
           offers<MultiType, void(T&) const>(&MultiType::get) &&
           offers<MultiType, void(T&)>(&MultiType::move);
}

static_assert(holdsType<unsigned int>() && holdsType<int>() && holdsType<long long>() && holdsType<bool>() &&
              holdsType<QString>() && holdsType<QByteArray>() && holdsType<RecordPointer>());
static_assert(std::is_constructible_v<MultiType, char const*>);
static_assert(std::is_copy_constructible_v<MultiType> && std::is_default_constructible_v<MultiType>);
static_assert(offers<MultiType, void()>(&MultiType::clean));
static_assert(offers<MultiType, int() const>(&MultiType::getType));
static_assert(offers<MultiType, bool(MultiType const&) const>(&MultiType::operator==));
static_assert(std::is_same_v<std::underlying_type_t<MultiType::Type>, int>);
static_assert(std::is_convertible_v<MultiType::Type, int>);
static_assert(MultiType::None == 0 && MultiType::DataSet == 1 && MultiType::UInt == 2 && MultiType::Int == 3);
static_assert(MultiType::Bool == 4 && MultiType::String == 5 && MultiType::ByteArray == 6 &&
              MultiType::Int64 == 7);

namespace ds = DataSets::Impl;

static_assert(offers<RecordPointer(bool)>(&ds::createDS));
static_assert(offers<bool(Record const*, Record const*)>(&ds::compare));
static_assert(offers<void(Record&, QString const&, MultiType const&)>(&ds::setValueImpl));
static_assert(offers<MultiType(Record&, QString const&)>(&ds::extractValueImpl));
static_assert(offers<bool(Record&, QString const&)>(&ds::deleteValueImpl));
static_assert(offers<bool(Record&, QString const&)>(&ds::deleteDataValue));
static_assert(offers<void(Record&)>(&ds::clearImpl));
static_assert(offers<void(Record&)>(&ds::clearDataObjects));
static_assert(offers<int(Record const*, QString const&)>(&ds::getDataType));
static_assert(offers<int(Record const*)>(&ds::getDataCount));
static_assert(offers<bool(Record const&, QString const&)>(&ds::isValidKey));
static_assert(offers<void(Record*, QString const&, Record const*)>(&ds::copyDataValueImpl));
static_assert(offers<void(Record*, QString const&, Record const*)>(&ds::copyDataValue));

template <typename T, typename Given = T>
constexpr bool hasTypedFamily()
{
    return offers<bool(Record const*, QString const&, T&)>(&ds::getDataValue) &&
           offers<bool(Record&, QString const&, T&)>(&ds::moveDataValue) &&
           offers<void(Record&, QString const&, Given)>(&ds::setDataValue) &&
           offers<void(Record&, QString const&, T&)>(&ds::emplaceDataValue);
}

static_assert(hasTypedFamily<RecordPointer, RecordPointer const&>() && hasTypedFamily<bool>() &&
              hasTypedFamily<unsigned int>() && hasTypedFamily<int>() && hasTypedFamily<long long>() &&
              hasTypedFamily<QString, QString const&>() && hasTypedFamily<QByteArray, QByteArray const&>());
static_assert(offers<void(Record&, QString const&, char const*)>(&ds::setDataValue));

static_assert(std::is_constructible_v<DataSets::DataSet, RecordPointer> &&
              !std::is_convertible_v<RecordPointer, DataSets::DataSet>);
static_assert(std::is_same_v<decltype(DataSets::DataSet::data), RecordPointer>);
static_assert(std::is_same_v<decltype(DataSets::DataObject::data), RecordPointer>);
static_assert(std::is_same_v<decltype(DataSets::DataObject::key), QString>);
static_assert(std::is_base_of_v<DataSets::DataObject, DataSets::DataIterator>);
static_assert(std::is_same_v<decltype(DataSets::DataIterator::atEnd), bool>);
static_assert(std::is_constructible_v<DataSets::DataIterator, DataSets::DataSet const&> &&
              !std::is_convertible_v<DataSets::DataSet const&, DataSets::DataIterator>);
static_assert(std::is_same_v<decltype(Record::isArray), bool>);

static_assert(offers<DataSets::DataSet(QByteArray const&)>(&JsonDataSet::serializeJson));
static_assert(offers<DataSets::DataSet(QString const&)>(&JsonDataSet::serializeJsonData<QString>));
static_assert(offers<DataSets::DataSet(QByteArray const&)>(&JsonDataSet::serializeJsonData<QByteArray>));
static_assert(offers<QByteArray(DataSets::DataSet const&)>(&JsonDataSet::deserializeJson));
static_assert(offers<QString(DataSets::DataSet const&)>(&JsonDataSet::deserializeJsonData<QString>));
static_assert(offers<QByteArray(DataSets::DataSet const&)>(&JsonDataSet::deserializeJsonData<QByteArray>));
static_assert(offers<void(QJsonObject const&, DataSets::DataSet&)>(&JsonDataSet::serializeFromJson));
static_assert(offers<void(QJsonArray const&, DataSets::DataSet&)>(&JsonDataSet::serializeFromJsonArray));
static_assert(
    offers<void(QString const&, QJsonValue const&, DataSets::DataSet&)>(&JsonDataSet::serializeFromJsonPair));
static_assert(offers<void(DataSets::DataSet const&, QJsonObject&)>(&JsonDataSet::deserializeToJson));
static_assert(offers<void(DataSets::DataSet const&, QJsonArray&)>(&JsonDataSet::deserializeToJsonArray));
static_assert(offers<QJsonValue(DataSets::DataObject const*)>(&JsonDataSet::getJsonValueFromDataObject));
static_assert(
    offers<void(DataSets::DataObject const*, QJsonObject&)>(&JsonDataSet::deserializeFromDataObject));
static_assert(offers<QByteArray(QString const&)>(&JsonDataSet::serializeJsonFromFile));
static_assert(offers<QString(QString const&)>(&JsonDataSet::buildJsonStringFromFile));

static_assert(number(ResourcesDefs::RemoteType::None) == -1 &&
              number(ResourcesDefs::RemoteType::Production) == 0);
static_assert(number(ResourcesDefs::RemoteType::Staging) == 1 &&
              number(ResourcesDefs::RemoteType::Development) == 2);
static_assert(number(ResourcesDefs::RcsLanguage::Italian) == 0 &&
              number(ResourcesDefs::RcsLanguage::English) == 1);
using Helpers = ApplicationDataHelpers;
static_assert(offers<QSqlDatabase()>(&Helpers::getDBConnection));
static_assert(offers<bool(QSqlDatabase const&)>(&Helpers::checkVersion));
static_assert(offers<bool(QSqlDatabase const&)>(&Helpers::setManufacturer));
static_assert(offers<bool(QSqlDatabase const&)>(&Helpers::setApplicationName));
static_assert(offers<QSqlQuery(QSqlDatabase const&, bool)>(&Helpers::fetchPalette));
static_assert(offers<TextPairs(bool)>(&Helpers::getColorsPalette));
static_assert(offers<QSqlQuery(QSqlDatabase const&, ResourcesDefs::RcsLanguage)>(&Helpers::fetchStrings));
static_assert(offers<TextPairs(ResourcesDefs::RcsLanguage)>(&Helpers::getStringsLanguage));
static_assert(offers<QString()>(&Helpers::getFontFamily));
static_assert(offers<std::optional<EndpointData>(QSqlQuery const&)>(&Helpers::buildEndPointData));
static_assert(offers<QList<EndpointData>(QSqlDatabase const&)>(&Helpers::getEndpoints));

static_assert(offers<EndpointData, ResourcesDefs::RemoteType() const>(&EndpointData::getType));
static_assert(offers<EndpointData, void(ResourcesDefs::RemoteType)>(&EndpointData::setType));
static_assert(offers<EndpointData, QString() const>(&EndpointData::getLockedFeatureModeInfo));
static_assert(offers<EndpointData, void(QString const&)>(&EndpointData::setLocketFeautreModeInfo));
static_assert(offers<EndpointData, QString() const>(&EndpointData::getDiscoverMobileOffer));
static_assert(offers<EndpointData, void(QString const&)>(&EndpointData::setWhatsNew));
static_assert(offers<EndpointData, bool() const>(&EndpointData::isProduction));

static_assert(offers<DataSets::DataSet()>(&ApplicationData::getApplicationData));
static_assert(
    offers<bool(QSqlDatabase const&, QString const&, DataSets::DataSet&)>(&ApplicationData::setField));
static_assert(offers<bool(DataSets::DataSet const&)>(&ApplicationData::setApplicationData));

static_assert(std::is_same_v<std::underlying_type_t<LineStatus::Status>, int>);
static_assert(std::is_constructible_v<LineStatus, LineStatus::Status>);
static_assert(offers<LineStatus()>(&LineStatus::createTerminatedAsTemporaryUnavailable));
static_assert(offers<std::vector<LineStatus::Status>()>(&LineStatus::getAllStatuses));
static_assert(offers<LineStatus, QString() const>(&LineStatus::toString));
static_assert(offers<LineStatus, int() const>(&LineStatus::serialize));
static_assert(offers<LineStatus(int)>(&LineStatus::deserialize));
static_assert(offers<LineStatus, bool(LineStatus const&) const>(&LineStatus::operator<));

static_assert(number(DTMFHelpers::DTMFSignal::Pause) == 0 && number(DTMFHelpers::DTMFSignal::Hash) == 12);
static_assert(offers<std::optional<char>(DTMFHelpers::DTMFSignal)>(&DTMFHelpers::translateDTMFSignalToChar));
static_assert(offers<std::optional<DTMFHelpers::DTMFSignal>(char)>(&DTMFHelpers::translateCharToDTMFSignal));
static_assert(offers<bool(QChar)>(&DTMFHelpers::isValidDTMFCharacter));

using Numbers = PhoneNumberLiterals;
static_assert(
    std::is_same_v<std::remove_cv_t<decltype(Numbers::EMERGENCY_NUMBERS)>, std::map<QString, QString>>);
static_assert(offers<int()>(&Numbers::getCountryCode));
static_assert(offers<std::string()>(&Numbers::getMobileValidateRegexpr));
static_assert(offers<std::string()>(&Numbers::getGeneralContactNumberValidateRegexpr));
static_assert(
    offers<std::pair<QString, QString>(QString const&, QString const&)>(&Numbers::processPhoneNumberPrefix));
static_assert(offers<void(QString&, bool, bool)>(&Numbers::filterInvalidPhoneNumberCharacters));
static_assert(offers<QString(QString const&, bool)>(&Numbers::sanitizePhoneNumber));
static_assert(offers<QString(QString const&)>(&Numbers::removeCountryCodeFromMobileNumber));
static_assert(offers<bool(QString const&, QString const&)>(&Numbers::comparePhoneNumbers));
static_assert(offers<bool(QString const&)>(&Numbers::isAnonymousNumber));
static_assert(offers<QString(QString const&, QString const&, bool, bool)>(&Numbers::validatePhoneNumber));
static_assert(offers<QString(QString const&)>(&Numbers::extractDTMFSignalsFromNumber));
static_assert(offers<std::optional<QString>(QString const&)>(&Numbers::getEmergencyInfoByPhoneNumber));
static_assert(offers<QString(QString const&, QString const&)>(&PhoneUtils::getLandlineSelectedDescription));
static_assert(
    offers<QString(QString const&, QString const&, QString const&)>(&PhoneUtils::getSipAccountDescription));

static_assert(offers<QString(int, int, QChar const&)>(&StringUtils::stringifyNumberWithLowerBoundWidth));
static_assert(offers<QString(QString)>(&StringUtils::getFistLetterUppercase));
static_assert(offers<QString(QString const&)>(&StringUtils::removeExtraBlankSpaces));
static_assert(offers<QString(QString const&)>(&StringUtils::removeWhitespaceCharacters));
static_assert(offers<QString(QString const&)>(&StringUtils::getInitialsFromFullName));
static_assert(offers<QString(QString)>(&StringUtils::sanitizeEmail));
static_assert(offers<bool(QString const&)>(&StringUtils::validateEmail));
static_assert(offers<bool(QString const&)>(&StringUtils::validatePhoneNumber));
static_assert(offers<void(QString&, QString const&)>(&StringUtils::removeNoPrintableChars));
static_assert(offers<Texts(Texts const&, QString const&, QString const&)>(&StringUtils::filterAudioDevices));
static_assert(offers<QString(int)>(&StringUtils::getDurationSecondsToString));
static_assert(offers<std::optional<bool>(QString const&, QString const&)>(&StringUtils::isLessInsensitive));
static_assert(offers<StringUtils::ShortcutDefinition(QString const&)>(&StringUtils::parseShortcut));
static_assert(offers<QList<QVariant>(QString const&)>(&StringUtils::toQmlSequence));
static_assert(offers<bool(QString const&, QString const&)>(&StringUtils::isBiggerVersionThan));
static_assert(offers<bool(QString const&, QString const&)>(&StringUtils::isSameVersionAs));
static_assert(offers<bool(QString const&, QString const&)>(&StringUtils::isLessVersionThan));
static_assert(std::is_same_v<decltype(StringUtils::ShortcutDefinition::modifiers), unsigned int> &&
              std::is_same_v<decltype(StringUtils::ShortcutDefinition::key), unsigned int>);
static_assert(
    offers<StringUtils::ShortcutDefinition, bool() const>(&StringUtils::ShortcutDefinition::isValid));
static_assert(offers<QString(QString)>(&StringUtils::sanitizeHTMLCharacters));
static_assert(offers<QString(QString const&)>(&StringUtils::htmlfy));
static_assert(offers<QString(QString const&)>(&StringUtils::deHTMLfy));
static_assert(
    offers<QString(QString const&, QString const&, QString const&)>(&StringUtils::wrapSubStringsInHTMLTag));
static_assert(offers<QString(QString const&, QString const&, QString const&, bool)>(
    &StringUtils::wrapSubStringsInHTMLTagExtended));
static_assert(offers<bool(QString const&, QString const&, bool)>(&StringUtils::isFilterMatched));
static_assert(offers<QString(QString const&)>(&StringUtils::removeDiacriticalMarks));

using Occurrences = std::vector<std::pair<int, std::vector<int>>>;
static_assert(std::is_same_v<SubstringWrapper::TokenOccurrences, Occurrences>);
static_assert(std::is_constructible_v<SubstringWrapper, QString, QString, std::pair<QString, QString>, bool>);
static_assert(offers<SubstringWrapper, QString() const>(&SubstringWrapper::wrapText));
static_assert(offers<Occurrences(Texts const&, Texts const&, bool)>(&SubstringWrapper::getTokenOccurrences));
static_assert(offers<bool(Occurrences&, std::size_t)>(&SubstringWrapper::doRemoveDuplicates));
static_assert(offers<bool(Occurrences&)>(&SubstringWrapper::cleanFromDuplicates));
static_assert(offers<QString(QString const&)>(&HTMLHelpers::processLinks));
static_assert(offers<QString(QString const&)>(&HTMLHelpers::generateParagraphs));

static_assert(offers<NameDataInfo, QString(bool) const>(&NameDataInfo::getFullNameReversed));
static_assert(offers<NameDataInfo, QString() const>(&NameDataInfo::getInitials));
static_assert(offers<NameDataInfo, void(QString const&, QString const&)>(&NameDataInfo::setNameAndInitials));
static_assert(offers<QString(QString const&, QString const&)>(&NameDataInfo::getInitialsFromFullName));
static_assert(offers<QString(QString const&, bool)>(&NameDataInfo::removeExtraBlankSpacesIfNeeded));

static_assert(std::has_virtual_destructor_v<ISerializable> && std::is_abstract_v<ISerializable>);
static_assert(std::is_base_of_v<ISerializable, PBXContactInfo> && !std::is_final_v<PBXContactInfo>);
static_assert(std::is_constructible_v<PBXContactInfo, DataSets::DataSet const&>);
static_assert(std::is_constructible_v<PBXContactInfo, QJsonObject const&>);
static_assert(offers<PBXContactInfo, void(QString const&)>(&PBXContactInfo::setNumbers));
static_assert(offers<PBXContactInfo, void(std::set<QString> const&)>(&PBXContactInfo::setNumbers));
static_assert(offers<PBXContactInfo, QString() const>(&PBXContactInfo::getNumber));
static_assert(offers<void(QJsonObject const&, QString const&, QString&)>(&PBXContactInfo::setValueFromJson));
static_assert(offers<void(QJsonObject const&, std::set<QString>&)>(&PBXContactInfo::setNumbersFromJson));
static_assert(offers<std::set<QString>(QString const&)>(&PBXContactInfo::createNumberSetFromString));
static_assert(offers<QString(std::set<QString> const&)>(&PBXContactInfo::createStringFromNumberSet));
static_assert(offers<ContactReferenceType(QString const&)>(&PBXContactInfo::contactLabel2referenceType));
static_assert(offers<QString(ContactReferenceType)>(&PBXContactInfo::referenceType2contactLabel));
static_assert(std::is_same_v<std::underlying_type_t<ContactReferenceType>, unsigned int>);
static_assert(number(ContactReferenceType::Work) == 2 && number(ContactReferenceType::Email) == 9);

static_assert(offers<std::vector<unsigned char>(unsigned long long)>(&Crypto::getKey));
static_assert(offers<Crypto::CryptoFlag(Crypto::CryptoFlag, Crypto::CryptoFlag)>(&Crypto::addFlag));
static_assert(
    offers<QByteArray(QByteArray const&, unsigned long long, Crypto::ProtectionMode)>(&Crypto::encrypt));
static_assert(offers<QByteArray(QByteArray const&, unsigned long long)>(&Crypto::decrypt));
static_assert(offers<QString(QString const&)>(&Crypto::computeSHA256));
static_assert(std::is_same_v<std::underlying_type_t<Crypto::CryptoFlag>, unsigned char>);
static_assert(number(Crypto::CryptoFlag::None) == 0 && number(Crypto::CryptoFlag::Compressed) == 1 &&
              number(Crypto::CryptoFlag::Checksum) == 2 && number(Crypto::CryptoFlag::Hash) == 4);

static_assert(offers<QString(QString const&, QString const&, bool)>(&FilePaths::buildAbsoluteFilePath));
static_assert(
    offers<QString(QString const&, QString const&, QString const&, bool)>(&FilePaths::buildAbsoluteFilePath));
static_assert(areAll<QString()>(&FilePaths::getAppPath, &FilePaths::getAppFilename,
                                &FilePaths::getResourcePath, &FilePaths::getAssetsPath,
                                &FilePaths::getAppIconPath, &FilePaths::buildDataDir,
                                &FilePaths::buildLocalDataDir, &FilePaths::buildTempPath));
static_assert(areAll<QString(QString const&)>(
    &FilePaths::buildDataPath, &FilePaths::buildLocalDataPath, &FilePaths::getAbsoluteFilePath,
    &FilePaths::getAbsolutePath, &FilePaths::getFolderNameFromFolderPath, &FilePaths::getFileNameFromUrl,
    &FilePaths::getFileExtension, &FilePaths::prependFileProtocolToPath, &FilePaths::getExtensionFromFileName,
    &FilePaths::buildDownloadFilePath, &FilePaths::handleFileScheme, &FilePaths::getFileMimeType));
static_assert(areAll<QString(QString const&, QString const&)>(
    &FilePaths::buildAbsoluteDirPath, &FilePaths::absoluteFilePath, &FilePaths::absoluteDirPath,
    &FilePaths::buildRelativeFilePath, &FilePaths::getFilePathInSubfolder,
    &FilePaths::prependStringToFilename, &FilePaths::removePrefixFromFilename, &FilePaths::appendSuffix,
    &FilePaths::getFileByBaseName, &FilePaths::changeFileExtension));
static_assert(areAll<bool(QString const&)>(&FilePaths::buildDir, &FilePaths::createDirIfNeeded,
                                           &FilePaths::createSubdir, &FilePaths::createFoldersIteratively,
                                           &FilePaths::fileExists, &FilePaths::dirExists,
                                           &FilePaths::isDirectory, &FilePaths::isNetworkPath,
                                           &FilePaths::removeFile, &FilePaths::createFile,
                                           &FilePaths::removeFolder, &FilePaths::cleanFolder));
static_assert(areAll<bool(QString const&, QString const&)>(
    &FilePaths::createFileCopyInSameFolder, &FilePaths::renameFile, &FilePaths::writeFileContent,
    &FilePaths::areSameFilePath, &ImageUtils::renameFile));
static_assert(areAll<bool(QString const&, QString&)>(&FilePaths::copyFile, &FilePaths::moveFile));
static_assert(areAll<void(QString const&, QString const&)>(&FilePaths::removeAllFilesByBaseName,
                                                           &FilePaths::removeOtherFilesByBaseName,
                                                           &FilePaths::removeExtensionFilesFromFolder));
static_assert(offers<qint64(QString const&)>(&FilePaths::getFileSize));
static_assert(offers<QString(QString const&, bool)>(&FilePaths::getFileName));
static_assert(offers<QString(QString, QString const&)>(&FilePaths::cleanFromSubFolder));
static_assert(offers<QString(QDir, QString const&)>(&FilePaths::recursiveCheckFile));
static_assert(offers<QString(QString const&, QByteArray const&)>(&FilePaths::createBinaryDataFile));
static_assert(offers<bool(QString const&, QString const&, QString const&)>(&FilePaths::moveFolder));
static_assert(offers<void(QString const&, int, bool)>(&FilePaths::removeOldFiles));
static_assert(offers<QString(QString const&, QString const&, std::vector<QString> const&, unsigned int,
                             QString&)>(&FilePaths::readFileContent));
static_assert(offers<QString(QString const&, QString const&, QString const&)>(&FilePaths::appendToFileName));
static_assert(offers<void(QString const&)>(&FilePaths::showFileInFolder));
static_assert(offers<QImage(QByteArray const&, QString const&)>(&ImageUtils::convertByteArray2Image));
static_assert(offers<QByteArray(QImage const&, QString const&)>(&ImageUtils::convertImage2ByteArray));
static_assert(offers<std::pair<QByteArray, QString>(QString const&)>(&ImageUtils::getByteArrayFromPath));
static_assert(offers<bool(QString const&, QString const&, QString const&, QString&, QString&, QString&)>(
    &ImageUtils::buildFilePaths));
static_assert(
    offers<bool(QByteArray const&, QString const&, QString const&)>(&ImageUtils::saveImageFromByteArray));
static_assert(areAll<bool(QString const&)>(&ImageUtils::removeFile, &ImageUtils::isFormatValid,
                                           &UrlHelpers::isValidFile));
static_assert(areAll<QString(QString const&)>(&ImageUtils::getFileFormat, &UrlHelpers::getFileName));

static_assert(
    std::is_same_v<decltype(NetworkUtils::Operator::progress), std::function<void(long long, long long)>>);
static_assert(std::is_same_v<decltype(NetworkUtils::Operator::isCancelled), std::function<bool()>>);
static_assert(!NetworkUtils::TransferResult{}.ok && !NetworkUtils::TransferResult{}.remoteError);
static_assert(offers<void()>(&NetworkUtils::start) && offers<void()>(&NetworkUtils::stop));
static_assert(offers<NetworkUtils::TransferResult(QString const&, QString const&, NetworkUtils::Operator*)>(
    &NetworkUtils::downloadFile));
static_assert(offers<NetworkUtils::TransferResult(QString const&, std::vector<char>&,
                                                  NetworkUtils::Operator*)>(&NetworkUtils::downloadToMemory));
static_assert(offers<long long(QString const&)>(&NetworkUtils::getFileSize));
static_assert(offers<NetworkUtils::TransferResult(QString const&, QString const&, long long,
                                                  NetworkUtils::Operator*)>(&NetworkUtils::putFile));
static_assert(offers<bool(QString const&, std::vector<QString> const&, QString const&)>(&NetworkUtils::post));
static_assert(offers<QHttpPart(QString const&, QByteArray const&)>(&NetworkUtils::getHttpTextPart));
static_assert(offers<QHttpPart(QString const&, QString const&, QString const&, QFile&)>(
    &NetworkUtils::getHttpFilePart));

static_assert(std::is_constructible_v<WAVData, std::filesystem::path>);
static_assert(offers<WAVData, bool()>(&WAVData::parseFile));
static_assert(offers<WAVData, bool(std::ifstream&)>(&WAVData::parseHeader));
static_assert(offers<WAVData, unsigned int(unsigned char const*, std::ifstream&)>(&WAVData::parseHeaderData));
static_assert(offers<WAVData, bool(WAVData const&) const>(&WAVData::isCompatible));
static_assert(offers<WAVData, bool(WAVData const&)>(&WAVData::append));
static_assert(offers<WAVData, bool(std::string const&) const>(&WAVData::writeHeaderToFile));
static_assert(offers<WAVData, bool(std::ofstream&) const>(&WAVData::writePayloadToFile));
static_assert(offers<WAVData, bool(std::ifstream&, std::ofstream&) const>(&WAVData::writeBuffer));
static_assert(offers<int(unsigned char const*)>(&wav::byteArrayToInt32LE));
static_assert(offers<void(int, unsigned char*)>(&wav::uInt32ToByteArrayLE));
static_assert(offers<wav::RepairResult(std::filesystem::path const&)>(&wav::tryToRepairWavHeaderIfNeeded));
static_assert(number(wav::RepairStatus::FileNotFound) == 4);

using Modifier = std::unique_ptr<SequenceGenerator::SequenceModifier>;
static_assert(std::is_constructible_v<ConstantSequenceGenerator, unsigned int, Modifier>);
static_assert(std::is_constructible_v<LimitedFibonacciGenerator, Modifier>);
static_assert(std::is_constructible_v<LimitedFibonacciGenerator, unsigned int,
                                      std::pair<unsigned int, unsigned int>, Modifier>);
static_assert(std::is_constructible_v<SequenceGenerator::RandomSequenceModifier, unsigned int, unsigned int>);
static_assert(offers<LimitedFibonacciGenerator, bool() const>(&LimitedFibonacciGenerator::isLimitReached));
static_assert(std::is_constructible_v<ReconnectionManager, std::unique_ptr<LimitedFibonacciGenerator>>);
static_assert(offers<ReconnectionManager, void() const>(&ReconnectionManager::tryConnectionAgain));
static_assert(offers<ReconnectionManager, void(bool)>(&ReconnectionManager::enable));
static_assert(offers<SingleInstanceGuard, void(QString const&, QString const&, QString const&)>(
    &SingleInstanceGuard::setup));
static_assert(
    offers<QString(QString const&, QString const&, QString const&)>(&SingleInstanceGuard::getServerName));
static_assert(
    offers<SingleInstanceGuard, void(std::function<void()>)>(&SingleInstanceGuard::setNewInstanceKicking));
static_assert(offers<SingleInstanceGuard, bool()>(&SingleInstanceGuard::launchServer));
static_assert(offers<SingleInstanceGuard, bool()>(&SingleInstanceGuard::isAnotherRunning));
using Container = AsyncCommandsContainter;
static_assert(offers<Container, std::optional<unsigned long>(std::shared_ptr<void>)>(&Container::add));
static_assert(offers<Container, unsigned long() const>(&Container::getTicket));
static_assert(offers<Container, std::shared_ptr<void>(unsigned long) const>(&Container::getObject));
static_assert(offers<Container, std::shared_ptr<void>(std::function<bool(std::shared_ptr<void> const&)>)
                                    const>(&Container::getObject));
static_assert(offers<Container, std::vector<std::shared_ptr<void>>() const>(&Container::getAllObjects));
static_assert(std::has_virtual_destructor_v<Container> && std::has_virtual_destructor_v<AsyncCommandTicket>);
static_assert(offers<QString()>(&UniqueId::createUUID));
static_assert(offers<unsigned long()>(&UniqueId::generateNumber));
static_assert(offers<QString(SystemInfo::SystemButtonType)>(&SystemInfo::getSystemButtonGlyph));
static_assert(number(SystemInfo::SystemButtonType::Close) == 6);
static_assert(offers<void(QObject*, std::function<void()>, Qt::ConnectionType)>(
    &ThreadUtils::moveExecutionToObjectThread));
static_assert(offers<int(int)>(&MathUtils::dBToAmplitude));
static_assert(std::is_copy_constructible_v<TimeTracker> && std::is_constructible_v<TimeTracker, int>);

} // namespace

int main() {}
