#include "Driver.h"

#include "Page.h"

#include <QClipboard>
#include <QDeadlineTimer>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <utility>

namespace {

constexpr int patience = 60'000; // ms, for a machine that is busy
constexpr int lookInterval = 20; // ms

} // namespace

Driver::Driver(QStringList const& given)
{
    (void)m_channel.open();
    m_engine.setInitialProperties(
        {{QStringLiteral("channel"), QVariant::fromValue(&m_channel)}, {QStringLiteral("given"), given}});
    m_engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Desk/qml/Main.qml")));
    m_window = qobject_cast<QQuickWindow*>(m_engine.rootObjects().value(0));
    if (m_window != nullptr) {
        m_window->requestActivate();
        wait([&] { return m_window->property("shown").toBool() && m_window->isActive(); });
        (void)sees(QAccessible::Heading, QString()); // the first page, which is still being made
        (void)longestWait();
    }
}

bool Driver::wait(std::function<bool()> const& condition) const
{
    // Not QTest::qWaitFor(), which sleeps between its looks: the watchdog would count that.
    QTimer looks;
    looks.start(lookInterval);
    QDeadlineTimer const end(patience);
    while (!m_watchdog.excuse(condition)) {
        if (end.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

bool Driver::sees(QAccessible::Role role, QString const& name) const
{
    bool const isThere = wait([&] { return Page::find(m_window, role, name) != nullptr; });
    if (!isThere) {
        fprintf(stderr, "There is no %d \"%s\" among:\n%s", role, qPrintable(name),
                qPrintable(Page::described(m_window)));
    }
    return isThere;
}

bool Driver::click(QAccessible::Role role, QString const& name)
{
    QPoint middle;
    // What is laid out or moves does so from frame to frame, and on a busy machine looks come faster than
    // these.
    QSignalSpy frames(m_window, &QQuickWindow::frameSwapped);
    bool const isStill =
        sees(role, name) && wait([&] {
            m_window->update();
            if (frames.isEmpty()) {
                return false;
            }
            frames.clear();
            QAccessibleInterface* const part = Page::find(m_window, role, name);
            QPoint const before = std::exchange(middle, part == nullptr ? QPoint() : part->rect().center());
            bool const isInside = m_window->geometry().contains(middle);
            if (auto* const item = part == nullptr ? nullptr : qobject_cast<QQuickItem*>(part->object());
                !isInside && item) {
                item->forceActiveFocus(Qt::TabFocusReason); // as the keyboard brings it into view
            }
            return isInside && before == middle;
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
    return sees(QAccessible::Heading, title) && rests(); // what is new is put in place with the next frame
}

bool Driver::rests() const
{
    QSignalSpy frames(m_window, &QQuickWindow::frameSwapped);
    m_window->update();
    bool const isFirst = wait([&] { return !frames.isEmpty(); });
    m_window->update();
    return isFirst && wait([&] { return frames.size() > 1; });
}

void Driver::photograph(QString const& name) const
{
    QString const folder = qEnvironmentVariable("DESK_PICTURES");
    if (!folder.isEmpty()) {
        QTest::qWait(150); // for what moves
        m_window->grabWindow().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
    }
}
