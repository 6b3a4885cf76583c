// A caller of the client library outside the project: uses something from every room.

#include <client/CallClock.h>
#include <client/ContactDirectory.h>
#include <client/InstanceChannel.h>
#include <client/Links.h>
#include <client/PhoneNumber.h>
#include <client/SearchFilter.h>
#include <client/Transfers.h>

#include <QCoreApplication>
#include <cstdio>

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
    using namespace Softphone;

    check("a number to dial", dialString(QStringLiteral("\u202A+39 333 1234567"), QStringLiteral("IT")) ==
                                  QStringLiteral("+393331234567"));
    check("a link", findLinks(QStringLiteral("see www.example.com.")).value(0).target.scheme() ==
                        QStringLiteral("https"));
    check("a search", SearchFilter(QStringLiteral("muller")).matches({QStringLiteral("Müller")}));

    ContactDirectory directory;
    check("a directory", directory.load(R"([{"id": 1, "firstName": "Ada"}])").added == 1);

    CallClock clock;
    clock.setStatus(LineStatus::createActive());
    check("a clock", clock.text() == QStringLiteral("00:00"));

    Transfers transfers;
    Transfer* const refused = transfers.download({.url = QUrl(QStringLiteral("gopher://127.0.0.1/"))});
    QObject::connect(refused, &Transfer::finished, &application, &QCoreApplication::quit);
    QCoreApplication::exec();
    check("a transfer", refused->error() == TransferError::SchemeRefused);
    return failures;
}
