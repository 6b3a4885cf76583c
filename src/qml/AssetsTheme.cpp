#include "AssetsTheme.h"

#include "AssetsMap.h"

#include <appdata/ApplicationDataHelpers.h>

#include <QColor>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QStyleHints>
#include <utility>

namespace {

/// Desktops that tell no scheme, and versions of Qt that ask for none, still give the palette of one.
bool isPaletteDark()
{
    QPalette const palette = QGuiApplication::palette();
    return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

bool isDesktopDark()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    Qt::ColorScheme const scheme = QGuiApplication::styleHints()->colorScheme();
    if (scheme != Qt::ColorScheme::Unknown) {
        return scheme == Qt::ColorScheme::Dark;
    }
#endif
    return isPaletteDark();
}

/// What is no colour stays a text.
QVariant color(QString const& value)
{
    return QColor::isValidColorName(value) ? QVariant(QColor::fromString(value)) : QVariant(value);
}

} // namespace

namespace SoftphoneQml {

AssetsTheme::AssetsTheme(QObject* parent)
    : QObject(parent)
    , m_colors(new AssetsMap(this))
    , m_dark(wantsDark())
{
    qGuiApp->installEventFilter(this);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this, &AssetsTheme::follow);
#endif
    read();
}

QVariant AssetsTheme::colors() const
{
    return QVariant::fromValue<QObject*>(m_colors);
}

void AssetsTheme::setScheme(Scheme scheme)
{
    if (scheme == m_scheme) {
        return;
    }
    m_scheme = scheme;
    follow();
    Q_EMIT schemeChanged();
}

QString AssetsTheme::fontFamily()
{
    if (m_fontFamily.isNull()) {
        m_fontFamily = ApplicationDataHelpers::getFontFamily();
    }
    return m_fontFamily;
}

bool AssetsTheme::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange) {
        follow();
    }
    return QObject::eventFilter(watched, event);
}

bool AssetsTheme::wantsDark() const
{
    return m_scheme == Desktop ? isDesktopDark() : m_scheme == Dark;
}

void AssetsTheme::follow()
{
    if (m_dark == wantsDark()) {
        return;
    }
    m_dark = !m_dark;
    read();
    Q_EMIT darkChanged();
}

void AssetsTheme::read()
{
    QVariantHash colors;
    for (auto const& [role, value] : ApplicationDataHelpers::getColorsPalette(!m_dark)) {
        colors.insert(role, color(value));
    }
    m_colors->setRows(std::move(colors));
}

} // namespace SoftphoneQml
