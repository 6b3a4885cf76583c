#include "ChatTextFunctions.h"

#include "ScriptFields.h"

#include <QJSEngine>

using Softphone::LinkRules;

namespace {

constexpr std::array ruleFields{
    SoftphoneQml::Field<LinkRules>{
        QLatin1StringView("schemes"),
        [](auto& rules, auto& value) { return SoftphoneQml::take(rules.schemes, value); }},
    SoftphoneQml::Field<LinkRules>{
        QLatin1StringView("bareHosts"),
        [](auto& rules, auto& value) { return SoftphoneQml::take(rules.bareHosts, value); }},
    SoftphoneQml::Field<LinkRules>{
        QLatin1StringView("phoneNumbers"),
        [](auto& rules, auto& value) { return SoftphoneQml::take(rules.phoneNumbers, value); }},
    SoftphoneQml::Field<LinkRules>{
        QLatin1StringView("region"),
        [](auto& rules, auto& value) { return SoftphoneQml::take(rules.region, value); }},
};

} // namespace

namespace SoftphoneQml {

QString ChatTextFunctions::linkedHtml(QString const& text, QVariantMap const& rules) const
{
    std::optional<LinkRules> const made = read(rules);
    return made ? Softphone::linkedHtml(text, *made) : QString();
}

QList<Softphone::Link> ChatTextFunctions::findLinks(QString const& text, QVariantMap const& rules) const
{
    std::optional<LinkRules> const made = read(rules);
    return made ? Softphone::findLinks(text, *made) : QList<Softphone::Link>();
}

std::optional<LinkRules> ChatTextFunctions::read(QVariantMap const& rules) const
{
    LinkRules made;
    QString const problem = fill(made, rules, ruleFields);
    if (problem.isEmpty()) {
        return made;
    }
    if (QJSEngine* const engine = qjsEngine(this)) {
        engine->throwError(QJSValue::TypeError, problem);
    }
    return std::nullopt;
}

} // namespace SoftphoneQml
