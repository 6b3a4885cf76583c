#include "FileSink_p.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <utility>

namespace Softphone {

namespace {

constexpr int mostCopies = 10'000;
constexpr qsizetype longestName = 255;
constexpr qint64 longestRecord = 8 * 1024;

QString followed(QString const& path)
{
    QFileInfo const info(path);
    return info.isSymLink() && info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
}

/// \a path with " (1)" and so on before its suffix; the name is shortened where the mark makes it too long.
QString numbered(QString const& path, int number)
{
    qsizetype const start = path.lastIndexOf(QLatin1Char('/')) + 1;
    QString const name = path.mid(start);
    qsizetype const dot = name.lastIndexOf(QLatin1Char('.'));
    QString stem = dot > 0 ? name.left(dot) : name;
    QString const tail = QStringLiteral(" (%1)").arg(number) + (dot > 0 ? name.mid(dot) : QString());
    while (stem.size() > 1 && QFile::encodeName(stem + tail).size() > longestName) {
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    }
    return path.left(start) + stem + tail;
}

} // namespace

FileSink::FileSink(Target target)
    : m_target(std::move(target))
{
}

FileSink::~FileSink()
{
    letGo(m_target.keepPart);
}

void FileSink::open()
{
    QString const reason = problem();
    if (!reason.isEmpty()) {
        m_hasFailed = true;
        Q_EMIT failed(reason);
        return;
    }
    m_path = followed(m_target.path);
    if (!m_part.open(QFileInfo(m_path).path(), m_target.key)) {
        return failWithErrno();
    }
    auto const known = usableRecord();
    Q_EMIT opened(known ? m_part.size() : 0, known ? known->tag : QByteArray(), known ? known->length : 0);
}

/// What is known of the file whose beginning the part is; nothing when one cannot go on from it.
std::optional<ResumeRecord> FileSink::usableRecord() const
{
    auto known = ResumeRecord::fromBytes(m_part.record(longestRecord));
    qint64 const size = m_part.size();
    return known && size > 0 && size < known->length ? known : std::nullopt;
}

/// What is wrong with the target before anything is asked of the server; empty: nothing.
QString FileSink::problem() const
{
    if (m_target.path.endsWith(QLatin1Char('/'))) {
        return tr("this is not the name of a file");
    }
    QFileInfo const target(followed(m_target.path));
    if (!QFileInfo(target.path()).isDir()) {
        return tr("the folder %1 does not exist").arg(target.path());
    }
    if (!target.exists()) {
        return QString();
    }
    if (!target.isFile()) {
        return tr("this is a folder or a device");
    }
    if (m_target.ifExists == IfExists::Fail) {
        return tr("there is a file of this name");
    }
    if (m_target.ifExists == IfExists::Replace && !target.isWritable()) {
        return tr("the file of this name is write-protected");
    }
    return QString();
}

void FileSink::failWithErrno()
{
    m_hasFailed = true;
    Q_EMIT failed(qt_error_string(errno));
}

void FileSink::begin(qint64 kept, std::optional<ResumeRecord> const& record)
{
    if (m_hasFailed) {
        return;
    }
    if (kept == 0) {
        // First the record, so that it never stands beside bytes of another file.
        QFile::remove(m_part.recordPath());
        if (!m_part.clear()) {
            return failWithErrno();
        }
        QFile file(m_part.recordPath());
        if (record && file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            file.write(record->toBytes());
        }
    }
    if (!startDigest(kept)) {
        failWithErrno();
    }
}

bool FileSink::startDigest(qint64 kept)
{
    m_digest.reset();
    return m_target.sha256.isEmpty() || kept == 0 ||
           m_part.read([this](QByteArrayView block) { m_digest.addData(block); });
}

void FileSink::append(QByteArray const& bytes)
{
    if (m_hasFailed) {
        return;
    }
    if (!m_part.append(bytes)) {
        return failWithErrno();
    }
    if (!m_target.sha256.isEmpty()) {
        m_digest.addData(bytes);
    }
    Q_EMIT written();
}

void FileSink::commit()
{
    if (m_hasFailed) {
        return;
    }
    if (!m_target.sha256.isEmpty() && m_digest.result() != m_target.sha256) {
        Q_EMIT digestDiffers();
        return;
    }
    if (!takeName()) {
        return failWithErrno();
    }
    m_isCommitted = true;
    QFile::remove(m_part.recordPath());
    Q_EMIT committed(m_path);
}

bool FileSink::takeName()
{
    if (m_target.ifExists == IfExists::Replace) {
        m_part.takePermissionsOf(m_path);
        return m_part.replace(m_path);
    }
    if (m_part.claim(m_path)) {
        return true;
    }
    QString const asked = m_path;
    for (int copy = 1; m_target.ifExists == IfExists::KeepBoth && errno == EEXIST && copy < mostCopies;
         ++copy) {
        m_path = numbered(asked, copy);
        if (m_part.claim(m_path)) {
            return true;
        }
    }
    return false;
}

void FileSink::discard(bool keepsPart)
{
    letGo(keepsPart);
    Q_EMIT discarded();
}

void FileSink::letGo(bool keepsPart)
{
    if (!m_part.isOpen()) {
        return;
    }
    if (!m_isCommitted && !(keepsPart && usableRecord())) {
        QFile::remove(m_part.recordPath());
        m_part.remove();
    }
    m_part.close(); // the next download may come before this object goes
}

} // namespace Softphone
