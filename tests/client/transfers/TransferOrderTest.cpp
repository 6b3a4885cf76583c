#include "Probe.h"

#include <LocalNginx.h>
#include <QPointer>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <atomic>
#include <memory>

using namespace Softphone;
using namespace std::chrono_literals;

/// Many transfers at once, and owners who change their minds.
class TransferOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void runsNoMoreThanAllowed();
    void keepsTheOrder();
    void sixtyFourAtOnce();
    void cancelsAtAnyMoment_data();
    void cancelsAtAnyMoment();
    void cancelsFromSlots();
    void cancelsAll();
    void isDeletedAtAnyMoment_data();
    void isDeletedAtAnyMoment();
    void isDeletedFromItsOwnSignals_data();
    void isDeletedFromItsOwnSignals();
    void ownerIsDeletedFromASignal();
    void survivesKilledServers_data();
    void survivesKilledServers();
    void thousandOfMixedFates();

private:
    std::unique_ptr<QTemporaryDir> m_folder = std::make_unique<QTemporaryDir>();
    std::unique_ptr<LocalNginx> m_nginx;
    QByteArray m_large = pattern(3'000'000);
};

void TransferOrderTest::initTestCase()
{
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), "content"));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), m_large));
}

void TransferOrderTest::runsNoMoreThanAllowed()
{
    std::atomic<int> now = 0;
    std::atomic<int> most = 0;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readRequest();
        int const here = ++now;
        for (int seen = most; here > seen && !most.compare_exchange_weak(seen, here);) {
        }
        connection.pause(50ms);
        --now;
        connection.send(answerWith("body"));
    });
    Transfers transfers;
    transfers.setParallel(2);
    QList<Transfer*> all;
    for (int i = 0; i < 12; ++i) {
        all.append(transfers.download(requestFor(server.url())));
    }
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::None);
    }
    QCOMPARE(most.load(), 2);
}

void TransferOrderTest::keepsTheOrder()
{
    Transfers transfers;
    transfers.setParallel(0);
    QList<int> order;
    QList<Transfer*> all;
    for (int i = 0; i < 10; ++i) {
        all.append(transfers.download(requestFor(m_nginx->url(QStringLiteral("/small")))));
        connect(all.constLast(), &Transfer::finished, this, [&order, i] { order.append(i); });
    }
    QVERIFY(ends(all.constLast()));
    QCOMPARE(order, QList<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

void TransferOrderTest::sixtyFourAtOnce()
{
    Transfers transfers;
    transfers.setParallel(64);
    QList<Transfer*> all;
    for (int i = 0; i < 64; ++i) {
        QString const file = m_folder->filePath(QStringLiteral("at once %1").arg(i));
        all.append(transfers.download(requestFor(m_nginx->url(QStringLiteral("/large")), file)));
    }
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->errorText(), QString());
        QVERIFY(TestFiles::read(transfer->path()) == m_large);
        QVERIFY(QFile::remove(transfer->path()));
    }
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
}

void TransferOrderTest::cancelsAtAnyMoment_data()
{
    QTest::addColumn<int>("moment");
    QTest::newRow("before its turn") << -1;
    for (int const milliseconds : {0, 1, 2, 5, 10, 30, 100, 300}) {
        QTest::addRow("after %d ms", milliseconds) << milliseconds;
    }
}

void TransferOrderTest::cancelsAtAnyMoment()
{
    QFETCH(int, moment);
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "old"));
    Transfers transfers;
    Transfer* const transfer =
        transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large")), file));
    QSignalSpy const finished(transfer, &Transfer::finished);
    if (moment >= 0) {
        QTest::qWait(moment);
    }
    transfer->cancel();
    transfer->cancel();
    QCOMPARE(finished.size(), 0);
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), TransferError::Cancelled);
    QCOMPARE(transfer->errorText(),
             QStringLiteral("The transfer with %1 was cancelled.").arg(serverOf(m_nginx->url({}))));
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 1);
    QTest::qWait(50);
    QCOMPARE(finished.size(), 1);
    QVERIFY(QFile::remove(file));
}

void TransferOrderTest::cancelsFromSlots()
{
    Transfers transfers;
    Transfer* const first = transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large"))));
    Transfer* const second = transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large"))));
    QSignalSpy const firstFinished(first, &Transfer::finished);
    connect(first, &Transfer::progress, first, &Transfer::cancel);
    connect(first, &Transfer::finished, second, &Transfer::cancel);
    connect(first, &Transfer::finished, first, &Transfer::cancel);
    QVERIFY(ends(second));
    QCOMPARE(first->error(), TransferError::Cancelled);
    QCOMPARE(second->error(), TransferError::Cancelled);
    QCOMPARE(firstFinished.size(), 1);
}

void TransferOrderTest::cancelsAll()
{
    Transfers transfers;
    QList<Transfer*> all;
    for (int i = 0; i < 20; ++i) {
        QString const file = i % 2 == 0 ? m_folder->filePath(QString::number(i)) : QString();
        all.append(transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large")), file)));
    }
    QTRY_VERIFY(all.constFirst()->done() > 0);
    transfers.cancelAll();
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::Cancelled);
    }
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
}

void TransferOrderTest::isDeletedAtAnyMoment_data()
{
    cancelsAtAnyMoment_data();
}

void TransferOrderTest::isDeletedAtAnyMoment()
{
    QFETCH(int, moment);
    for (bool const withOwner : {false, true}) {
        auto transfers = std::make_unique<Transfers>();
        Transfer* const transfer = transfers->download(requestFor(
            m_nginx->url(QStringLiteral("/slow/large")), m_folder->filePath(QStringLiteral("file"))));
        int signalCount = 0;
        if (moment >= 0) {
            QTest::qWait(moment);
        }
        connect(transfer, &Transfer::finished, this, [&] { ++signalCount; });
        connect(transfer, &Transfer::progress, this, [&] { ++signalCount; });
        if (withOwner) {
            transfers.reset();
        } else {
            delete transfer;
            // Files are opened and removed in the order that they were asked for: the first one may not even
            // be there yet, but is gone when a second one has got its name.
            QString const second = m_folder->filePath(QStringLiteral("second"));
            QVERIFY(ends(transfers->download(requestFor(m_nginx->url(QStringLiteral("/small")), second))));
            QVERIFY(QFile::remove(second));
        }
        QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
        QTest::qWait(20);
        QCOMPARE(signalCount, 0);
    }
}

void TransferOrderTest::isDeletedFromItsOwnSignals_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("fromProgress");
    QTest::newRow("finished") << m_nginx->url(QStringLiteral("/small")) << false;
    QTest::newRow("failed") << m_nginx->url(QStringLiteral("/status/404")) << false;
    QTest::newRow("refused") << QStringLiteral("ftp://a/") << false;
    QTest::newRow("on its way") << m_nginx->url(QStringLiteral("/slow/large")) << true;
    QTest::newRow("last progress") << m_nginx->url(QStringLiteral("/small")) << true;
}

void TransferOrderTest::isDeletedFromItsOwnSignals()
{
    QFETCH(QString, url);
    QFETCH(bool, fromProgress);
    Transfers transfers;
    for (QString const& path : {QString(), m_folder->filePath(QStringLiteral("file"))}) {
        QPointer<Transfer> const transfer(transfers.download(requestFor(url, path)));
        if (fromProgress) {
            connect(transfer, &Transfer::progress, this, [=] { delete transfer.data(); });
        } else {
            connect(transfer, &Transfer::finished, this, [=] { delete transfer.data(); });
        }
        QTRY_VERIFY(transfer.isNull());
    }
    Transfer* const next = transfers.download(requestFor(m_nginx->url(QStringLiteral("/small"))));
    QVERIFY(ends(next));
    QCOMPARE(next->error(), TransferError::None);
    QFile::remove(m_folder->filePath(QStringLiteral("file")));
    QTRY_COMPARE(TestFiles::names(m_folder->path()).size(), 0);
}

void TransferOrderTest::ownerIsDeletedFromASignal()
{
    auto* const transfers = new Transfers;
    QPointer<Transfers> const watched(transfers);
    for (int i = 0; i < 10; ++i) {
        QString const path = m_folder->filePath(QString::number(i));
        transfers->download(requestFor(m_nginx->url(QStringLiteral("/slow/large")), path));
    }
    Transfer* const first = transfers->download(requestFor(QStringLiteral("ftp://a/")));
    connect(first, &Transfer::finished, this, [=] { delete transfers; });
    QTRY_VERIFY(watched.isNull());
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
}

void TransferOrderTest::survivesKilledServers_data()
{
    QTest::addColumn<int>("after");
    QTest::newRow("before the request") << -1;
    for (int const milliseconds : {0, 1, 5, 20, 100, 400}) {
        QTest::addRow("after %d ms", milliseconds) << milliseconds;
    }
}

void TransferOrderTest::survivesKilledServers()
{
    QFETCH(int, after);
    LocalNginx nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    QVERIFY(nginx.addFile(QStringLiteral("large"), m_large));
    Transfers transfers;
    QString const up = m_folder->filePath(QStringLiteral("up"));
    QVERIFY(TestFiles::write(up, QByteArray(20'000'000, 'x')));
    QString const url = nginx.url(QStringLiteral("/slow/large"));
    QList<Transfer*> const all = {
        transfers.download(requestFor(url)),
        transfers.download(requestFor(url, m_folder->filePath(QStringLiteral("file")))),
        transfers.download(requestFor(nginx.secureUrl(QStringLiteral("/slow/large")))),
        transfers.upload(requestFor(nginx.url(QStringLiteral("/upload/up")), up)),
    };
    if (after >= 0) {
        QTest::qWait(after);
    }
    nginx.kill();
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        if (transfer->error() != TransferError::None) {
            QVERIFY2(transfer->error() == TransferError::Refused ||
                         transfer->error() == TransferError::Truncated ||
                         transfer->error() == TransferError::Tls,
                     qPrintable(transfer->errorText()));
            QVERIFY(transfer->errorText().contains(QStringLiteral("127.0.0.1")));
        }
    }
    QVERIFY(all.first()->error() != TransferError::None);
    QCOMPARE(TestFiles::names(m_folder->path()), QSet<QString>({QStringLiteral("up")}));
    QVERIFY(QFile::remove(up));
}

void TransferOrderTest::thousandOfMixedFates()
{
    ScriptedServer const cut(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\nabc"));
    ScriptedServer const silent([](ScriptedServer::Connection& connection) { connection.pause(60s); });
    Transfers transfers;
    transfers.setParallel(20);
    qsizetype const descriptors = TestFiles::openDescriptors();
    QHash<TransferError, int> fates;
    int finished = 0;
    int started = 0;
    QList<QString> const urls = {
        m_nginx->url(QStringLiteral("/small")),
        m_nginx->url(QStringLiteral("/large")),
        m_nginx->url(QStringLiteral("/status/503")),
        m_nginx->url(QStringLiteral("/slow/large")),
        m_nginx->secureUrl(QStringLiteral("/small")),
        cut.url(),
        silent.url(),
        QStringLiteral("http://127.0.0.1:1/"),
        QStringLiteral("ftp://a/"),
        QString(),
    };
    for (; started < 1000; ++started) {
        QString const path =
            started % 3 == 0 ? m_folder->filePath(QStringLiteral("f%1").arg(started % 40)) : QString();
        TransferRequest request = requestFor(urls.at(started % urls.size()), path);
        request.limits.stalled = request.url == QUrl(silent.url()) ? 200ms : 60s;
        request.ifExists = started % 2 == 0 ? IfExists::Replace : IfExists::KeepBoth;
        Transfer* const transfer = transfers.download(request);
        connect(transfer, &Transfer::finished, this, [&fates, &finished, transfer] {
            ++fates[transfer->error()];
            ++finished;
            transfer->deleteLater();
        });
        if (request.url.path().startsWith(QLatin1String("/slow"))) {
            connect(transfer, &Transfer::progress, transfer, &Transfer::cancel);
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(finished, started, 120'000);
    QHash<TransferError, int> const expected = {
        {TransferError::None, 200},    {TransferError::HttpStatus, 100},    {TransferError::Cancelled, 100},
        {TransferError::Tls, 100},     {TransferError::Truncated, 100},     {TransferError::Stalled, 100},
        {TransferError::Refused, 100}, {TransferError::SchemeRefused, 100}, {TransferError::BadAddress, 100},
    };
    QCOMPARE(fates, expected);
    QTRY_VERIFY(transfers.findChildren<Transfer*>().isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(TestFiles::openDescriptors() <= descriptors + 40, 20'000);
    for (QString const& name : TestFiles::names(m_folder->path())) {
        QVERIFY2(!name.contains(QStringLiteral("part")), qPrintable(name));
    }
}

int main(int argc, char** argv)
{
    return runTest<TransferOrderTest>(argc, argv);
}

#include "TransferOrderTest.moc"
