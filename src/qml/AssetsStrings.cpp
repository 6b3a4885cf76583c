#include "AssetsStrings.h"

#include "AssetsMap.h"

#include <appdata/ApplicationDataHelpers.h>

#include <QLocale>
#include <utility>

using ResourcesDefs::RcsLanguage;

namespace SoftphoneQml {

static_assert(static_cast<RcsLanguage>(AssetsStrings::Italian) == RcsLanguage::Italian);
static_assert(static_cast<RcsLanguage>(AssetsStrings::English) == RcsLanguage::English);

AssetsStrings::AssetsStrings(QObject* parent)
    : QObject(parent)
    , m_texts(new AssetsMap(this))
    , m_language(QLocale().language() == QLocale::Italian ? Italian : English)
{
    read();
}

QVariant AssetsStrings::texts() const
{
    return QVariant::fromValue<QObject*>(m_texts);
}

void AssetsStrings::setLanguage(Language language)
{
    if (language == m_language) {
        return;
    }
    m_language = language;
    read();
    Q_EMIT languageChanged();
}

void AssetsStrings::read()
{
    QVariantHash texts;
    for (auto const& [id, text] :
         ApplicationDataHelpers::getStringsLanguage(static_cast<RcsLanguage>(m_language))) {
        texts.insert(id, text);
    }
    m_texts->setRows(std::move(texts));
}

} // namespace SoftphoneQml
