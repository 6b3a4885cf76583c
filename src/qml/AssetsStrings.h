#pragma once

#include <QObject>
#include <QVariant>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

class AssetsMap;

/// `Strings`: the texts of the assets database in the language that is set.
///
/// They are read when the singleton is used for the first time, and again for each new language.
class AssetsStrings : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Strings)
    QML_SINGLETON
    /// The texts under their identifiers: `Strings.texts["call.start"]`. A binding to one follows the
    /// language; an identifier that is not in the database is undefined.
    Q_PROPERTY(QVariant texts READ texts CONSTANT)
    /// The language of the texts; at first Italian where the default locale is, else English.
    Q_PROPERTY(Language language READ language WRITE setLanguage NOTIFY languageChanged)

public:
    /// The languages that the database has, with their numbers there.
    enum Language : int { Italian = 0, English = 1 };
    Q_ENUM(Language)

    /// For the engine, which makes one.
    explicit AssetsStrings(QObject* parent = nullptr);

    /// The map of the texts, which belongs to this object.
    [[nodiscard]] QVariant texts() const;
    /// The language of the texts.
    [[nodiscard]] Language language() const { return m_language; }
    /// Reads the texts in \a language.
    void setLanguage(Language language);

Q_SIGNALS:
    /// language() and the texts are others.
    void languageChanged();

private:
    void read();

    AssetsMap* m_texts;
    Language m_language;
};

} // namespace SoftphoneQml
