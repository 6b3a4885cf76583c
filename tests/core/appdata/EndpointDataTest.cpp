#include <appdata/EndpointData.h>

#include <QDebug>
#include <QHash>
#include <QSet>
#include <QVariant>
#include <RunTest.h>
#include <memory>
#include <type_traits>
#include <unordered_set>
#include <utility>

using ResourcesDefs::RemoteType;

namespace {

struct UrlField
{
    char const* name;
    QString (EndpointData::*get)() const;
    void (EndpointData::*set)(QString const& url);
};

constexpr UrlField urlFields[] = {
    {"ws", &EndpointData::getWs, &EndpointData::setWs},
    {"analytics", &EndpointData::getAnalytics, &EndpointData::setAnalytics},
    {"password reset", &EndpointData::getPasswordReset, &EndpointData::setPasswordReset},
    {"what's new", &EndpointData::getWhatsNew, &EndpointData::setWhatsNew},
    {"locked feature", &EndpointData::getLockedFeatureModeInfo, &EndpointData::setLocketFeautreModeInfo},
    {"mobile offer", &EndpointData::getDiscoverMobileOffer, &EndpointData::setDiscoverMobileOffer},
};

EndpointData filled()
{
    EndpointData endpoint;
    endpoint.setType(RemoteType::Staging);
    for (UrlField const& field : urlFields) {
        (endpoint.*field.set)(QStringLiteral("https://") + QLatin1String(field.name));
    }
    return endpoint;
}

} // namespace

class EndpointDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsWithNothing();
    void knowsProduction_data();
    void knowsProduction();
    void keepsEveryUrlApart_data();
    void keepsEveryUrlApart();
    void comparesTheType();
    void isAPlainValue();
    void printsAllFields();
};

void EndpointDataTest::startsWithNothing()
{
    EndpointData const endpoint;
    QCOMPARE(static_cast<int>(endpoint.getType()), -1);
    QVERIFY(!endpoint.isProduction());
    for (UrlField const& field : urlFields) {
        QVERIFY2((endpoint.*field.get)().isNull(), field.name);
    }
    QVERIFY(endpoint == EndpointData());
    QVERIFY(!(endpoint != EndpointData()));
}

void EndpointDataTest::knowsProduction_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("production");
    QTest::newRow("none") << -1 << false;
    QTest::newRow("production") << 0 << true;
    QTest::newRow("staging") << 1 << false;
    QTest::newRow("development") << 2 << false;
    QTest::newRow("a type of the application's own") << 99 << false;
}

void EndpointDataTest::knowsProduction()
{
    QFETCH(int, type);
    EndpointData endpoint;
    endpoint.setType(static_cast<RemoteType>(type));
    QCOMPARE(static_cast<int>(endpoint.getType()), type);
    QTEST(endpoint.isProduction(), "production");
    EndpointData withUrls = filled();
    withUrls.setType(static_cast<RemoteType>(type));
    QTEST(withUrls.isProduction(), "production");
}

void EndpointDataTest::keepsEveryUrlApart_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (UrlField const& field : urlFields) {
        QTest::newRow(field.name) << index++;
    }
}

void EndpointDataTest::keepsEveryUrlApart()
{
    QFETCH(int, index);
    UrlField const& own = urlFields[index];
    EndpointData changed = filled();
    (changed.*own.set)(QStringLiteral("HTTPS://") + QLatin1String(own.name));
    for (UrlField const& field : urlFields) {
        QString const scheme = &field == &own ? QStringLiteral("HTTPS://") : QStringLiteral("https://");
        QCOMPARE((changed.*field.get)(), scheme + QLatin1String(field.name));
    }
    QVERIFY(changed != filled());
    QVERIFY(!(changed == filled()));
    (changed.*own.set)((filled().*own.get)());
    QCOMPARE(changed, filled());
}

void EndpointDataTest::comparesTheType()
{
    EndpointData other = filled();
    other.setType(RemoteType::Development);
    QVERIFY(other != filled());
}

void EndpointDataTest::isAPlainValue()
{
    static_assert(!std::is_polymorphic_v<EndpointData> && !std::is_final_v<EndpointData>);
    static_assert(std::is_nothrow_move_constructible_v<EndpointData>);
    EndpointData const original = filled();
    EndpointData copy = original;
    EndpointData const moved = std::move(copy);
    QCOMPARE(moved, original);
    QCOMPARE(QVariant::fromValue(original).value<EndpointData>(), original);

    EndpointData other;
    QSet<EndpointData> const hashed{original, moved, other};
    std::unordered_set<EndpointData> const standard{original, moved, other};
    QCOMPARE(hashed.size(), 2);
    QCOMPARE(standard.size(), 2U);
    QCOMPARE(qHash(moved, 7), qHash(original, 7));
}

void EndpointDataTest::printsAllFields()
{
    std::unique_ptr<char[]> const text(QTest::toString(filled()));
    QString const printed = QString::fromUtf8(text.get());
    QVERIFY2(printed.startsWith(QStringLiteral("EndpointData(type 1, ")), text.get());
    for (UrlField const& field : urlFields) {
        QVERIFY2(
            printed.contains(QStringLiteral("\"https://") + QLatin1String(field.name) + QLatin1Char('"')),
            text.get());
    }
    std::unique_ptr<char[]> const own(toString(filled()));
    QCOMPARE(QString::fromUtf8(own.get()), printed);
    QString streamed;
    QDebug(&streamed) << filled() << 1 << 2;
    QCOMPARE(streamed.trimmed(), printed + QStringLiteral(" 1 2"));
}

int main(int argc, char** argv)
{
    return runTest<EndpointDataTest>(argc, argv);
}

#include "EndpointDataTest.moc"
