#include "Driver.h"

#include "Page.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>
#include <utility>

namespace {

constexpr int patience = 10'000; // ms

} // namespace

Driver::Driver(QStringList const& given)
{
    (void)m_channel.open();
    m_engine.setInitialProperties({{QStringLiteral("channel"), QVariant::fromValue(&m_channel)},
                                   {QStringLiteral("given"), given}});
    m_engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Desk/qml/Main.qml")));
    m_window = qobject_cast<QQuickWindow*>(m_engine.rootObjects().value(0));
    if (m_window != nullptr) {
        m_window->requestActivate();
        wait([this] { return m_window->property("shown").toBool() && m_window->isActive(); });
    }
}

bool Driver::wait(std::function<bool()> const& condition)
{
    return QTest::qWaitFor(condition, patience);
}

bool Driver::sees(QAccessible::Role role, QString const& name) const
{
    bool const isThere = wait([&] { return Page::find(m_window, role, name) != nullptr; });
    if (!isThere) {
        fprintf(stderr, "There is no %d \"%s\" among:\n%s", role, qPrintable(name), qPrintable(Page::described(m_window)));
    }
    return isThere;
}

bool Driver::click(QAccessible::Role role, QString const& name)
{
    QPoint middle;
    bool const isStill = sees(role, name) && wait([&] {
        QAccessibleInterface* const part = Page::find(m_window, role, name);
        QPoint const before = std::exchange(middle, part == nullptr ? QPoint() : part->rect().center());
        return !middle.isNull() && before == middle;
    });
    if (!isStill) {
        return false;
    }
    QTest::mouseClick(m_window, Qt::LeftButton, {}, m_window->mapFromGlobal(middle));
    return true;
}

void Driver::type(QString const& text) const
{
    for (QChar const letter : text) {
        QTest::keyClick(m_window, letter.toLatin1());
    }
}

void Driver::key(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(m_window, key, modifiers);
}

void Driver::paste(QString const& text) const
{
    QGuiApplication::clipboard()->setText(text);
    key(Qt::Key_V, Qt::ControlModifier);
}

void Driver::drop(QString const& text) const
{
    QMimeData data;
    data.setText(text);
    QPoint const middle(m_window->width() / 2, m_window->height() / 2);
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_window, &enter);
    QDropEvent drop(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_window, &drop);
}

QString Driver::field(QString const& name) const
{
    QAccessibleInterface* const part = Page::find(m_window, QAccessible::EditableText, name);
    return part == nullptr ? QString() : part->text(QAccessible::Value);
}

bool Driver::show(int index, QString const& title)
{
    key(static_cast<Qt::Key>(Qt::Key_1 + index), Qt::ControlModifier);
    return sees(QAccessible::Heading, title);
}

void Driver::photograph(QString const& name) const
{
    QString const folder = qEnvironmentVariable("DESK_PICTURES");
    if (!folder.isEmpty()) {
        QTest::qWait(150); // for what moves
        m_window->grabWindow().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
    }
}
