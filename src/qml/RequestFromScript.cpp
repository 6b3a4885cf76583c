#include "RequestFromScript.h"

#include "ScriptFields.h"

#include <array>
#include <chrono>

using Softphone::TransferLimits;
using Softphone::TransferRequest;
using SoftphoneQml::Field;
using SoftphoneQml::fill;

namespace {

using SoftphoneQml::take;

bool take(std::chrono::milliseconds& target, QVariant const& value)
{
    qint64 count = 0;
    if (!take(count, value)) {
        return false;
    }
    target = std::chrono::milliseconds(count);
    return true;
}

bool take(QByteArray& target, QVariant const& value)
{
    target = value.toString().toUtf8();
    return value.canConvert<QString>();
}

constexpr std::array limitFields{
    Field<TransferLimits>{QLatin1StringView("connect"),
                          [](auto& limits, auto& value) { return take(limits.connect, value); }},
    Field<TransferLimits>{QLatin1StringView("stalled"),
                          [](auto& limits, auto& value) { return take(limits.stalled, value); }},
    Field<TransferLimits>{QLatin1StringView("total"),
                          [](auto& limits, auto& value) { return take(limits.total, value); }},
    Field<TransferLimits>{QLatin1StringView("bytes"),
                          [](auto& limits, auto& value) { return take(limits.bytes, value); }},
    Field<TransferLimits>{QLatin1StringView("redirects"),
                          [](auto& limits, auto& value) { return take(limits.redirects, value); }},
    Field<TransferLimits>{QLatin1StringView("schemes"),
                          [](auto& limits, auto& value) { return take(limits.schemes, value); }},
};

bool takeLimits(TransferRequest& request, QVariant const& value)
{
    QVariantMap object;
    return take(object, value) && fill(request.limits, object, limitFields).isEmpty();
}

bool takePath(TransferRequest& request, QVariant const& value)
{
    request.path = SoftphoneQml::localPath(value.toString());
    return value.canConvert<QString>();
}

bool takeHeaders(TransferRequest& request, QVariant const& value)
{
    QVariantMap object;
    if (!take(object, value)) {
        return false;
    }
    for (auto entry = object.cbegin(); entry != object.cend(); ++entry) {
        request.headers.emplaceBack(entry.key().toUtf8(), entry.value().toString().toUtf8());
    }
    return true;
}

bool takeIfExists(TransferRequest& request, QVariant const& value)
{
    int number = 0;
    if (!take(number, value) || number < 0 || number > static_cast<int>(Softphone::IfExists::Fail)) {
        return false;
    }
    request.ifExists = static_cast<Softphone::IfExists>(number);
    return true;
}

constexpr std::array requestFields{
    Field<TransferRequest>{QLatin1StringView("url"),
                           [](auto& request, auto& value) { return take(request.url, value); }},
    Field<TransferRequest>{QLatin1StringView("path"), takePath},
    Field<TransferRequest>{QLatin1StringView("headers"), takeHeaders},
    Field<TransferRequest>{QLatin1StringView("limits"), takeLimits},
    Field<TransferRequest>{QLatin1StringView("retries"),
                           [](auto& request, auto& value) { return take(request.retries, value); }},
    Field<TransferRequest>{QLatin1StringView("ifExists"), takeIfExists},
    Field<TransferRequest>{QLatin1StringView("sha256"),
                           [](auto& request, auto& value) { return take(request.sha256, value); }},
    Field<TransferRequest>{QLatin1StringView("keepPart"),
                           [](auto& request, auto& value) { return take(request.keepPart, value); }},
};

} // namespace

namespace SoftphoneQml {

RequestFromScript::RequestFromScript(QVariantMap const& object)
    : m_problem(fill(m_request, object, requestFields))
{
}

} // namespace SoftphoneQml
