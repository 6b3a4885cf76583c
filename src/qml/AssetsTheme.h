#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

class AssetsMap;

/// `Theme`: the palette and the fonts of the assets database, light or dark.
///
/// The palette is read when the singleton is used for the first time, and again when light becomes dark or
/// dark light. Needs a QGuiApplication.
class AssetsTheme : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Theme)
    QML_SINGLETON
    /// The colours under their roles: `Theme.colors.accent`. A binding to one follows the scheme; a role that
    /// is not in the database is undefined.
    Q_PROPERTY(QVariant colors READ colors CONSTANT)
    /// Which colours are shown; at first those that the desktop has.
    Q_PROPERTY(Scheme scheme READ scheme WRITE setScheme NOTIFY schemeChanged)
    /// Whether the dark colours are shown.
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)
    /// The family of the application's fonts, which the first use registers; empty without a database.
    Q_PROPERTY(QString fontFamily READ fontFamily CONSTANT)

public:
    /// What decides between light and dark.
    enum Scheme : int {
        Desktop, ///< what the desktop says, also when it changes its mind
        Light,
        Dark,
    };
    Q_ENUM(Scheme)

    /// For the engine, which makes one.
    explicit AssetsTheme(QObject* parent = nullptr);

    /// The map of the colours, which belongs to this object.
    [[nodiscard]] QVariant colors() const;
    /// Which colours are shown.
    [[nodiscard]] Scheme scheme() const { return m_scheme; }
    /// Shows the colours of \a scheme.
    void setScheme(Scheme scheme);
    /// Whether the dark colours are shown.
    [[nodiscard]] bool isDark() const { return m_dark; }
    /// The family of the application's fonts.
    [[nodiscard]] QString fontFamily();

    /// Notices that the desktop has changed its colours, when \a watched is the application and \a event
    /// says so.
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// scheme() is another.
    void schemeChanged();
    /// isDark() and the colours are others.
    void darkChanged();

private:
    [[nodiscard]] bool wantsDark() const;
    void follow();
    void read();

    AssetsMap* m_colors;
    Scheme m_scheme = Desktop;
    bool m_dark;
    QString m_fontFamily;
};

} // namespace SoftphoneQml
