// Whatever text a person pastes: what is dialled can be dialled, places lie inside the text, no digit is
// lost.

#include <client/PhoneNumber.h>

#include <QStringView>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace Softphone;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

bool isSip(QString const& text)
{
    return text.startsWith(QLatin1String("sip:"), Qt::CaseInsensitive) ||
           text.startsWith(QLatin1String("sips:"), Qt::CaseInsensitive);
}

void checkDialled(QString const& text, QString const& region, PlusSign plus)
{
    QString const dialled = dialString(text, region, plus);
    auto const isDialable = [](QChar c) { return QStringView(u"0123456789*#+,;").contains(c); };
    if (isSip(dialled)) {
        require(std::ranges::none_of(dialled, [](QChar c) { return c.isSpace(); }));
    } else {
        require(std::ranges::all_of(dialled, isDialable));
        require(dialled.isEmpty() ||
                std::ranges::any_of(dialled, [](QChar c) { return c >= u'0' && c <= u'9'; }));
        require(plus == PlusSign::Keep || !dialled.contains(u'+'));
    }
    require(dialString(dialled, region, plus) == dialled);
}

void checkParsed(QString const& text, QString const& region)
{
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, region);
    if (!number || !number->isValid()) {
        return;
    }
    std::optional<PhoneNumber> const again = PhoneNumber::parse(number->e164(), region);
    require(again && again->e164() == number->e164());
    std::optional<PhoneNumber> const address = PhoneNumber::parse(number->uri().toString(), region);
    require(address == number);
    require(PhoneNumber::match(*number, *number) == NumberMatch::Exact);
}

void checkFound(QString const& text, QString const& region)
{
    qsizetype end = 0;
    for (FoundNumber const& found : findPhoneNumbers(text, region)) {
        require(found.position >= end && found.length > 0);
        end = found.position + found.length;
        require(end <= text.size());
        require(!found.number.e164().isEmpty());
    }
}

QString digitsOf(QString text)
{
    text.removeIf([](QChar c) { return !c.isDigit(); });
    for (QChar& c : text) {
        c = QChar(u'0' + c.digitValue());
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // The first byte chooses the region, the second UTF-8 or UTF-16 with whatever surrogates there are.
    constexpr std::array regions = {"IT", "US", "GB", "DE", "SM", "", "ZZ"};
    if (size < 2) {
        return 0;
    }
    QString const region = QString::fromLatin1(regions.at(data[0] % regions.size()));
    QByteArray const bytes(reinterpret_cast<char const*>(data + 2), static_cast<qsizetype>(size - 2));
    QString text;
    if (data[1] % 2 == 0) {
        text = QString::fromUtf8(bytes);
    } else {
        for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) {
            text += QChar(static_cast<uchar>(bytes[i]), static_cast<uchar>(bytes[i + 1]));
        }
    }
    checkDialled(text, region, PlusSign::Keep);
    checkDialled(text, region, PlusSign::DoubleZero);
    checkParsed(text, region);
    checkFound(text, region);
    bool const basic = std::ranges::none_of(text, [](QChar c) { return c.isSurrogate(); });
    require(!basic || digitsOf(formatAsTyped(text, region)) == digitsOf(text));
    return 0;
}
